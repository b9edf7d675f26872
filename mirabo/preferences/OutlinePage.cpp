#include "mirabo/preferences/OutlinePage.h"

#include "mirabo/preferences/Settings.h"

#include <QColorDialog>
#include <QFormLayout>
#include <QPainter>
#include <QPushButton>
#include <QSpinBox>

#include <utility>

namespace mirabo {

namespace {

constexpr int kMaxWidth = 16;
constexpr int kPreviewLines = 6;

} // namespace

/// A shape with its outline, as the viewer has it.
class OutlinePage::Preview final : public QWidget {
public:
    explicit Preview(QWidget* parent) : QWidget(parent)
    {
        setMinimumHeight(fontMetrics().height() * kPreviewLines);
        setAccessibleName(tr("Preview of the outline"));
    }
    void set(const QColor& color, int width)
    {
        m_color = color;
        m_width = width;
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(rect(), QColor(60, 64, 72));
        const qreal size = height() * 0.55;
        const QRectF shape(width() / 2.0 - size / 2, height() / 2.0 - size / 2, size, size);
        const bool isBright = qGray(m_color.rgb()) > 127;
        const QColor rim = isBright ? Qt::black : Qt::white;
        for (const auto& [color, width] : {std::pair(rim, m_width + 2), {m_color, m_width}}) {
            painter.setPen(QPen(color, width));
            painter.setBrush(QColor(190, 170, 130));
            painter.drawEllipse(shape);
        }
    }

private:
    QColor m_color;
    int m_width = 1;
};

OutlinePage::OutlinePage(std::function<void()> saved, QWidget* parent)
    : QWidget(parent),
      m_saved(std::move(saved)),
      m_button(new QPushButton(this)),
      m_width(new QSpinBox(this)),
      m_preview(new Preview(this))
{
    m_button->setObjectName("m_outlineColor");
    m_button->setAccessibleName(tr("Color of the outline"));
    m_width->setObjectName("m_outlineWidth");
    m_width->setRange(1, kMaxWidth);
    m_width->setSuffix(tr(" points"));
    auto* layout = new QFormLayout(this);
    layout->addRow(tr("&Color:"), m_button);
    layout->addRow(tr("&Width:"), m_width);
    layout->addRow(tr("Preview:"), m_preview);
    connect(m_button, &QPushButton::clicked, this, &OutlinePage::chooseColor);
    connect(m_width, qOverload<int>(&QSpinBox::valueChanged), this, [this] { showChoice(); });
}

void OutlinePage::chooseColor()
{
    auto* dialog = new QColorDialog(m_color, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QColorDialog::colorSelected, this, [this](const QColor& color) {
        m_color = color;
        showChoice();
    });
    dialog->open();
}

void OutlinePage::showChoice()
{
    const int size = fontMetrics().height();
    QPixmap swatch(size, size);
    swatch.fill(m_color);
    m_button->setIcon(swatch);
    m_button->setText(m_color.name());
    m_preview->set(m_color, m_width->value());
}

void OutlinePage::load()
{
    m_color = readOutlineColor();
    m_width->setValue(readOutlineWidth());
    m_loaded = {m_color, m_width->value()};
    showChoice();
}

void OutlinePage::save()
{
    const auto chosen = std::pair(m_color, m_width->value());
    if (std::exchange(m_loaded, chosen) != chosen) {
        const SettingsChange change;
        writeOutlineColor(m_color);
        writeOutlineWidth(m_width->value());
    }
    m_saved();
}

MrbPluginsManager::PreferencePage OutlinePage::asPage()
{
    return {tr("Outline"), this, [this] { load(); }, [this] { save(); }};
}

} // namespace mirabo
