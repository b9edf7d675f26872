#include "ImageWidget.h"

#include "ImageView.h"
#include "Looks.h"

#include "mirabo/extender/MrbFieldEdit.h"

#include <kalmyr/base/SbImage.h>
#include <kalmyr/core/SoImageFile.h>
#include <kalmyr/fields/SoValueFields.h>

#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QImageReader>
#include <QImageWriter>
#include <QLabel>
#include <QLocale>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace {

/// Names of the channels of images with so many components.
QStringList channelNames(int components)
{
    static const QStringList s_names[] = {{},
                                          {"Grey"},
                                          {"Grey", "Alpha"},
                                          {"Red", "Green", "Blue"},
                                          {"Red", "Green", "Blue", "Alpha"}};
    return components >= 0 && components <= 4 ? s_names[components] : QStringList();
}

QString kindName(int components)
{
    static const char* const s_kinds[] = {"no pixels", "grey", "grey and alpha", "RGB", "RGBA"};
    return components >= 0 && components <= 4 ? s_kinds[components] : QString();
}

/// "Images (*.png ...)" for a file dialog.
QString nameFilter(const QList<QByteArray>& formats, const QByteArrayList& others)
{
    QStringList patterns;
    for (const QByteArray& format : formats + others)
        if (const QString pattern = "*." + QString::fromLatin1(format); !patterns.contains(pattern))
            patterns << pattern;
    return QString("Images (%1);;All files (*)").arg(patterns.join(' '));
}

SbString pathOf(const QString& path)
{
    return SbString(QFile::encodeName(path).constData());
}

} // namespace

ImageWidget::ImageWidget(MrbFieldEdit* edit, QWidget* parent)
    : MrbFieldWidget(edit, parent), m_view(new ImageView([this] { return image(); }, this))
{
    makeTools();
    makeLayout();
    m_view->setHint("No image");
    setFocusProxy(m_view);
    connect(m_view, &ImageView::pixelChanged, this, &ImageWidget::showPixel);
    connect(m_view, &ImageView::zoomChanged, this, &ImageWidget::showZoom);
    connect(m_channels, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            [this](int index) { m_view->setChannels(static_cast<ImageChannels>(index)); });
    connect(m_slice, QOverload<int>::of(&QSpinBox::valueChanged), this, [this](int slice) {
        m_view->setSlice(slice);
        showPixel(m_shownPixel);
    });
    connect(m_fit, &QToolButton::clicked, m_view, &ImageView::fit);
    connect(m_original, &QToolButton::clicked, m_view, [this] { m_view->setZoom(1); });
    connect(m_load, &QToolButton::clicked, this, &ImageWidget::chooseFileToLoad);
    connect(m_save, &QToolButton::clicked, this, &ImageWidget::chooseFileToSave);
    connect(m_clear, &QToolButton::clicked, this, &ImageWidget::clear);
    showValue();
}

ImageWidget::~ImageWidget()
{
    delete m_dialog;
}

void ImageWidget::makeTools()
{
    m_channels = new QComboBox(this);
    m_channels->setAccessibleName("Channels");
    m_channels->setToolTip("Channels that are shown");
    m_sliceLabel = looks::makeLabel("Slice", this);
    m_slice = new QSpinBox(this);
    m_slice->setAccessibleName("Slice");
    m_slice->setToolTip("Slice of the volume");
    m_sliceLabel->setBuddy(m_slice);
    m_fit = looks::makeButton("Fit", "Show the whole image (0)", this);
    m_original = looks::makeButton("1:1", "A screen pixel for each of the image (1)", this);
    m_fit->setCheckable(true);
    m_original->setCheckable(true);
    m_load = looks::makeButton("Load...", "Load an image from a file", this);
    m_save = looks::makeButton("Save...", "Save what is in the field to a file", this);
    m_clear = looks::makeButton("Clear", "Remove all pixels", this);
    m_size = looks::makeLabel({}, this);
    m_pixel = looks::makeLabel({}, this);
    m_problem = looks::makeLabel({}, this);
    for (QLabel* label : {m_size, m_pixel}) // of one line, whatever they say: the image stays put
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_problem->setWordWrap(true);
    m_problem->hide();
}

void ImageWidget::makeLayout()
{
    auto* tools = new QHBoxLayout;
    tools->setSpacing(looks::kSpacing);
    for (QWidget* widget : {static_cast<QWidget*>(m_load), static_cast<QWidget*>(m_save),
                            static_cast<QWidget*>(m_clear)})
        tools->addWidget(widget);
    tools->addStretch(1);
    auto* sight = new QHBoxLayout;
    sight->setSpacing(looks::kSpacing);
    for (QWidget* widget : {static_cast<QWidget*>(m_channels), static_cast<QWidget*>(m_sliceLabel),
                            static_cast<QWidget*>(m_slice), static_cast<QWidget*>(m_fit),
                            static_cast<QWidget*>(m_original)})
        sight->addWidget(widget);
    sight->addStretch(1);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(looks::kSpacing);
    column->addLayout(tools);
    column->addLayout(sight);
    column->addWidget(m_view, 1);
    column->addWidget(m_problem);
    column->addWidget(m_size);
    column->addWidget(m_pixel);
    setTabOrder(m_load, m_save);
    setTabOrder(m_save, m_clear);
    setTabOrder(m_clear, m_channels);
    setTabOrder(m_channels, m_slice);
    setTabOrder(m_slice, m_fit);
    setTabOrder(m_fit, m_original);
    setTabOrder(m_original, m_view);
}

SbImage ImageWidget::image() const
{
    SbImage image;
    edit()->read([&image](const SoField& field) {
        image = static_cast<const SoSFImage&>(field).getValue();
    });
    return image;
}

void ImageWidget::showValue()
{
    const SbImage value = image(); // not longer than this call
    const int slices = image_pixels::sliceCount(value);
    const bool isVolume = value.getDepth() > 0;
    {
        const QSignalBlocker noSlice(m_slice);
        m_slice->setRange(0, std::max(slices - 1, 0));
    }
    m_slice->setVisible(isVolume);
    m_sliceLabel->setVisible(isVolume);
    m_view->setSlice(m_slice->value());
    showChannels(value.isNull() ? 0 : value.getComponents());
    m_view->imageChanged({value.getWidth(), value.getHeight()});
    showSize(value);
    showPixel(m_shownPixel);
    m_fit->setEnabled(!value.isNull());
    m_original->setEnabled(!value.isNull());
    m_save->setEnabled(!value.isNull());
    m_clear->setEnabled(!value.isNull() && !m_isReadOnly);
    m_load->setEnabled(!m_isReadOnly);
}

void ImageWidget::showChannels(int components)
{
    if (components == m_components)
        return;
    m_components = components;
    const QString shown = m_channels->currentText();
    QStringList names = channelNames(components);
    names.prepend("All channels");
    if (components == 1)
        names = QStringList{"Grey"};
    const QSignalBlocker noChange(m_channels);
    m_channels->clear();
    m_channels->addItems(names);
    m_channels->setCurrentIndex(std::max(m_channels->findText(shown), 0));
    m_channels->setEnabled(names.size() > 1);
    m_view->setChannels(static_cast<ImageChannels>(m_channels->currentIndex()));
}

void ImageWidget::showSize(const SbImage& image)
{
    const int components = image.isNull() ? 0 : image.getComponents();
    m_sizeText = QString("%1 \u00d7 %2").arg(image.getWidth()).arg(image.getHeight());
    if (image.getDepth() > 0)
        m_sizeText += QString(" \u00d7 %1").arg(image.getDepth());
    m_sizeText += ", " + kindName(components);
    if (!image.isNull())
        m_sizeText += ", " + QLocale().formattedDataSize(static_cast<qint64>(image.getByteCount()));
    showZoom();
}

void ImageWidget::showZoom()
{
    const double percent = m_view->zoom() * 100;
    const QString shown = QString::number(percent, 'f', percent < 10 ? 1 : 0) + " %";
    m_fit->setChecked(m_view->isFitted());
    m_original->setChecked(!m_view->isFitted() && m_view->zoom() == 1);
    m_size->setText(m_components > 0 ? m_sizeText + ", " + shown : m_sizeText);
    m_size->setToolTip(QString("%1\n%2 components; size on the screen")
                           .arg(m_size->text())
                           .arg(std::max(m_components, 0)));
    m_view->setAccessibleDescription(m_size->text());
}

void ImageWidget::showPixel(QPoint pixel)
{
    m_shownPixel = pixel;
    const SbImage value = image();
    QString text(QChar::Nbsp); // keeps the line
    if (pixel.x() >= 0 && pixel.x() < value.getWidth() && pixel.y() < value.getHeight()) {
        const int row = value.getHeight() - 1 - pixel.y(); // as the field has them
        const std::size_t slice = static_cast<std::size_t>(m_slice->value()) * value.getWidth()
                                  * value.getHeight() * value.getComponents();
        const unsigned char* parts = value.getPixel(pixel.x(), row) + slice;
        text = QString("x %1  y %2  ").arg(pixel.x()).arg(row);
        QString hex = " #";
        for (int i = 0; i < value.getComponents(); ++i) {
            text += QString::number(parts[i]) + ' ';
            hex += QString("%1").arg(parts[i], 2, 16, QChar('0'));
        }
        text += hex;
    }
    m_pixel->setText(text);
    m_pixel->setToolTip(text.trimmed() + "\nThe pixel under the cursor; y counts from below");
}

void ImageWidget::setReadOnly(bool on)
{
    m_isReadOnly = on;
    if (on && m_dialog && m_dialog->acceptMode() == QFileDialog::AcceptOpen)
        m_dialog->reject();
    showValue();
}

QString ImageWidget::problemText() const
{
    return m_problem->isHidden() ? QString() : m_problem->text();
}

void ImageWidget::tell(const QString& problem)
{
    QPalette warning = palette();
    warning.setColor(QPalette::WindowText, looks::warningColor(palette()));
    m_problem->setPalette(warning);
    m_problem->setText(problem);
    m_problem->setVisible(!problem.isEmpty());
}

void ImageWidget::setImage(const SbImage& image)
{
    edit()->change([&image](SoField& value) {
        static_cast<SoSFImage&>(value).setValue(image);
        return true;
    });
    tell(edit()->getProblem());
    showValue();
}

bool ImageWidget::load(const QString& path)
{
    SbImage loaded;
    SbString error;
    if (!SoImageFile::read(pathOf(path), loaded, &error)) {
        // The desktop may know more formats.
        QImageReader reader(path);
        const QImage picture = reader.read();
        if (picture.isNull()) {
            tell(QFileInfo(path).fileName() + ": " + QString::fromUtf8(error.getString()));
            return false;
        }
        loaded = image_pixels::fromQImage(picture);
    }
    setImage(loaded);
    return problemText().isEmpty();
}

bool ImageWidget::save(const QString& path)
{
    const SbImage value = image();
    if (value.isNull()) {
        tell("There is no image to save");
        return false;
    }
    const QString suffix = QFileInfo(path).suffix().toLower();
    SbString error;
    if ((suffix.isEmpty() || suffix == "png") && value.getDepth() == 0) {
        const bool isWritten = SoImageFile::writePng(pathOf(path), value, &error);
        tell(isWritten ? QString() : QString::fromUtf8(error.getString()));
        return isWritten;
    }
    const QImage picture = image_pixels::toQImage(value, m_slice->value(), ImageChannels::All,
                                                  QRect(0, 0, value.getWidth(), value.getHeight()));
    QImageWriter writer(path, suffix.isEmpty() ? QByteArray("png") : QByteArray());
    const bool isWritten = writer.write(picture);
    tell(isWritten ? QString() : QString("%1: %2").arg(path, writer.errorString()));
    return isWritten;
}

void ImageWidget::clear()
{
    setImage(SbImage());
}

void ImageWidget::choose(QFileDialog* dialog, bool (ImageWidget::*use)(const QString&))
{
    delete m_dialog;
    m_dialog = dialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this, use](const QString& path) { (this->*use)(path); });
    dialog->open();
}

void ImageWidget::chooseFileToLoad()
{
    auto* dialog = new QFileDialog(this, "Load Image");
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilter(
        nameFilter(QImageReader::supportedImageFormats(), {"tif", "tiff", "rgb", "sgi"}));
    choose(dialog, &ImageWidget::load);
}

void ImageWidget::chooseFileToSave()
{
    auto* dialog = new QFileDialog(this, "Save Image");
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix("png");
    dialog->setNameFilter(nameFilter(QImageWriter::supportedImageFormats(), {}));
    choose(dialog, &ImageWidget::save);
}

MrbFieldWidget* makeImageWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent)
{
    return form == MrbFieldWidget::Form::Full ? new ImageWidget(edit, parent) : nullptr;
}
