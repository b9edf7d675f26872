#include "mirabo/plugins/defaults/ImageWidget.h"
#include "mirabo/extender/MrbFieldEdit.h"
#include "mirabo/plugins/defaults/ImageView.h"
#include "support/Passes.h"
#include "support/Program.h"
#include "support/TestServices.h"

#include <kalmyr/base/SbImage.h>
#include <kalmyr/core/SoImageFile.h>
#include <kalmyr/fields/SoValueFields.h>
#include <kalmyr/io/SoDB.h>

#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace {

/// Bytes 0, 1, 2 ... of an image of any size.
SbImage countingImage(SbVec3i32 size, int components)
{
    SbImage image;
    image.setValue(size, components);
    unsigned char* bytes = image.edit();
    for (std::size_t i = 0; i < image.getByteCount(); ++i)
        bytes[i] = static_cast<unsigned char>(i);
    return image;
}

TEST(ImagePixels, ConvertsRowsFromTheTopAndSlicesOfVolumes)
{
    const SbImage grey = countingImage({2, 2, 3}, 1);
    const QRect all(0, 0, 2, 2);
    const QImage slice = image_pixels::toQImage(grey, 1, ImageChannels::All, all);
    EXPECT_EQ(slice.pixel(0, 0), qRgb(6, 6, 6));
    EXPECT_EQ(slice.pixel(1, 1), qRgb(5, 5, 5));
    EXPECT_EQ(image_pixels::sliceCount(grey), 3);
    EXPECT_TRUE(image_pixels::toQImage(grey, 3, ImageChannels::All, all).isNull());
    EXPECT_TRUE(image_pixels::toQImage(SbImage(), 0, ImageChannels::All, all).isNull());

    const SbImage rgba = countingImage({2, 2, 0}, 4);
    const QImage picture = image_pixels::toQImage(rgba, 0, ImageChannels::All, all);
    EXPECT_EQ(picture.pixel(1, 0), qRgba(12, 13, 14, 15));
    EXPECT_EQ(image_pixels::toQImage(rgba, 0, ImageChannels::Fourth, all).pixel(1, 0),
              qRgb(15, 15, 15));
    EXPECT_EQ(image_pixels::toQImage(rgba, 0, ImageChannels::All, QRect(1, 1, 9, 9)).size(),
              QSize(1, 1));
}

TEST(ImagePixels, AveragesBlocksByTheirOpacity)
{
    const unsigned char bytes[] = {100, 0, 200, 255, 40, 255, 60, 255};
    const SbImage image(SbVec2i32(2, 2), 2, bytes);
    const QImage one = image_pixels::toQImage(image, 0, ImageChannels::All, QRect(0, 0, 2, 2), 2);
    ASSERT_EQ(one.size(), QSize(1, 1));
    EXPECT_EQ(one.pixel(0, 0), qRgba(100, 100, 100, 191)) << "what is transparent has no colour";
    EXPECT_EQ(image_pixels::toQImage(countingImage({5, 3, 0}, 3), 0, ImageChannels::All,
                                     QRect(0, 0, 5, 3), 2)
                  .size(),
              QSize(3, 2));
}

class ImageWidgetTest : public ::testing::Test {
protected:
    ImageWidgetTest() { SoDB::init(); }

    ImageWidget& show(const SbImage& image)
    {
        field.setValue(image);
        m_edit = std::make_unique<MrbFieldEdit>(&field);
        m_widget.reset(static_cast<ImageWidget*>(
            makeImageWidget(m_edit.get(), MrbFieldWidget::Form::Full, nullptr)));
        m_widget->resize(400, 400);
        m_widget->show();
        QApplication::setActiveWindow(m_widget.get());
        EXPECT_TRUE(support::passUntilExposed(m_widget.get()));
        support::flush();
        return *m_widget;
    }
    ImageWidget& widget() { return *m_widget; }
    ImageView& view() { return *m_widget->view(); }
    void press(const QString& button)
    {
        for (auto* candidate : widget().findChildren<QToolButton*>())
            if (candidate->text() == button)
                QTest::mouseClick(candidate, Qt::LeftButton);
    }
    bool says(const QString& text)
    {
        const auto labels = widget().findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(),
                           [&](const QLabel* label) { return label->text().contains(text); });
    }
    QComboBox& channels() { return *widget().findChild<QComboBox*>(); }
    void end() { m_widget.reset(); }
    /// The dialog that a button opens.
    QFileDialog* openDialog(const QString& button)
    {
        press(button);
        return widget().findChild<QFileDialog*>();
    }

    SoSFImage field;
    support::TestServices services;

private:
    std::unique_ptr<MrbFieldEdit> m_edit;
    std::unique_ptr<ImageWidget> m_widget;
};

TEST_F(ImageWidgetTest, ShowsTheNullImage)
{
    MrbFieldEdit edit(&field);
    EXPECT_EQ(makeImageWidget(&edit, MrbFieldWidget::Form::Compact, nullptr), nullptr);
    show(SbImage());
    EXPECT_TRUE(says("0 \u00d7 0"));
    EXPECT_FALSE(channels().isEnabled());
    QTest::mouseMove(view().viewport(), QPoint(50, 50));
    view().setZoom(1);
    view().fit();
    widget().grab();
    EXPECT_FALSE(widget().save("/tmp/none.png"));
    press("Clear");
    EXPECT_EQ(services.done(), 0);
}

TEST_F(ImageWidgetTest, ShowsChannelsAndPixels)
{
    show(countingImage({4, 2, 0}, 4));
    EXPECT_TRUE(says("4 \u00d7 2, RGBA"));
    EXPECT_EQ(channels().count(), 5);
    view().setZoom(20 * view().devicePixelRatioF());
    const QPoint center = view().viewport()->rect().center();
    const QPoint inTopLeft = center - QPoint(35, 15);
    QTest::mouseMove(view().viewport(), center);
    QTest::mouseMove(view().viewport(), inTopLeft);
    EXPECT_EQ(view().pixelAt(inTopLeft), QPoint(0, 0));
    EXPECT_TRUE(support::passUntil([this] { return says("x 0  y 1  16 17 18 19  #10111213"); }));
    QTest::keyClicks(&channels(), "g");
    EXPECT_EQ(channels().currentText(), "Green");
    widget().grab();
    EXPECT_EQ(view().shownPart().pixel(0, 0), qRgb(17, 17, 17));
    field.setValue(countingImage({4, 2, 0}, 3));
    ASSERT_TRUE(support::passUntil([this] { return says("4 \u00d7 2, RGB,"); }));
    EXPECT_EQ(channels().currentText(), "Green") << "stays";
    widget().grab();
    EXPECT_EQ(view().shownPart().pixel(0, 0), qRgb(13, 13, 13));
}

TEST_F(ImageWidgetTest, ShowsTheSlicesOfAVolume)
{
    show(countingImage({2, 2, 3}, 1));
    auto* slice = widget().findChild<QSpinBox*>();
    ASSERT_TRUE(slice->isVisible());
    EXPECT_EQ(slice->maximum(), 2);
    slice->setFocus();
    QTest::keyClick(slice, Qt::Key_Up);
    QTest::keyClick(slice, Qt::Key_Up);
    widget().grab();
    EXPECT_EQ(view().shownPart().pixel(0, 0), qRgb(10, 10, 10));
    field.setValue(countingImage({2, 2, 0}, 1));
    ASSERT_TRUE(support::passUntil([&] { return !slice->isVisible(); }));
    widget().grab();
    EXPECT_EQ(view().shownPart().pixel(0, 0), qRgb(2, 2, 2));
}

TEST_F(ImageWidgetTest, ConvertsALargeImageOnceAndThenWhatIsInView)
{
    constexpr int kSide = 4096;
    show(countingImage({kSide, kSide, 0}, 3));
    widget().grab();
    EXPECT_LE(view().shownPart().width(), 2 * view().viewport()->width());
    const long long whole = view().convertedPixels();
    EXPECT_GE(whole, 1LL * kSide * kSide);
    for (int i = 0; i < 5; ++i)
        widget().grab();
    EXPECT_EQ(view().convertedPixels(), whole) << "kept";

    press("1:1");
    EXPECT_EQ(view().zoom(), 1);
    widget().grab();
    QTest::keyClick(&view(), Qt::Key_PageDown);
    widget().grab();
    const double side = 402 * view().devicePixelRatioF();
    EXPECT_LE(static_cast<double>(view().convertedPixels() - whole), 2 * side * side);
    press("Fit");
    EXPECT_TRUE(view().isFitted());
}

TEST_F(ImageWidgetTest, ZoomsAboutTheCursor)
{
    show(countingImage({4096, 4096, 0}, 1));
    view().setZoom(1);
    const QPointF at(100, 60);
    const QPoint pixel = view().pixelAt(at);
    QWheelEvent wheel(at, view().viewport()->mapToGlobal(at.toPoint()), {}, {0, 120}, {}, {},
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(view().viewport(), &wheel);
    EXPECT_NEAR(view().zoom(), 1.414, 0.001);
    EXPECT_LE((view().pixelAt(at) - pixel).manhattanLength(), 2);
    for (int i = 0; i < 40; ++i)
        QTest::keyClick(&view(), Qt::Key_Plus);
    EXPECT_EQ(view().zoom(), ImageView::kMostZoom);
    widget().grab();
    for (int i = 0; i < 60; ++i)
        QTest::keyClick(&view(), Qt::Key_Minus);
    EXPECT_EQ(view().zoom(), ImageView::kLeastZoom);
    widget().grab();
    QTest::keyClick(&view(), Qt::Key_0);
    EXPECT_TRUE(view().isFitted());
}

TEST_F(ImageWidgetTest, LoadsAndSavesFilesAsOneCommand)
{
    const support::TempFolder folder;
    const QString png = QString::fromStdString(folder.path("image.png"));
    const SbImage image = countingImage({5, 3, 0}, 4);
    show(image);
    ASSERT_TRUE(widget().save(png));
    press("Clear");
    EXPECT_TRUE(field.getValue().isNull());
    ASSERT_TRUE(widget().load(png));
    EXPECT_EQ(field.getValue(), image);
    EXPECT_EQ(services.done(), 2);
    ASSERT_TRUE(widget().load(png));
    EXPECT_EQ(services.done(), 2) << "the same image";
    services.undo();
    services.undo();
    EXPECT_EQ(field.getValue(), image);
    const QString jpg = QString::fromStdString(folder.path("image.jpg"));
    ASSERT_TRUE(widget().save(jpg));
    ASSERT_TRUE(widget().load(jpg));
    EXPECT_EQ(field.getValue().getSize(), SbVec2i32(5, 3));
    const QString xpm = QString::fromStdString(folder.path("image.xpm"));
    ASSERT_TRUE(widget().save(xpm)) << "a format of the desktop alone";
    ASSERT_TRUE(widget().load(xpm));
    EXPECT_EQ(field.getValue().getSize(), SbVec2i32(5, 3));
}

TEST_F(ImageWidgetTest, TellsWhyAFileCannotBeUsed)
{
    const support::TempFolder folder;
    const SbImage image = countingImage({5, 3, 0}, 3);
    show(image);
    EXPECT_FALSE(widget().load(QString::fromStdString(folder.path("none.png"))));
    EXPECT_TRUE(widget().problemText().contains("none.png"));
    EXPECT_FALSE(
        widget().load(QString::fromStdString(folder.write("cut.png", "\x89PNG\r\n\x1a\n"))));
    EXPECT_FALSE(widget().problemText().isEmpty());
    EXPECT_FALSE(widget().save(QString::fromStdString(folder.path("none/image.png"))));
    EXPECT_FALSE(widget().save(QString::fromStdString(folder.path("image.unknown"))));
    EXPECT_TRUE(widget().problemText().contains("image.unknown"));
    EXPECT_EQ(field.getValue(), image);
    EXPECT_EQ(services.done(), 0);
    EXPECT_TRUE(widget().save(QString::fromStdString(folder.path("image"))));
    EXPECT_EQ(widget().problemText(), "");
}

TEST_F(ImageWidgetTest, AsksForFilesWithoutHoldingTheLoop)
{
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const support::TempFolder folder;
    const QString png = QString::fromStdString(folder.path("asked.png"));
    show(countingImage({5, 3, 0}, 3));
    QFileDialog* dialog = openDialog("Save...");
    ASSERT_TRUE(dialog);
    dialog->selectFile(png);
    static_cast<QDialog*>(dialog)->accept();
    support::flush();
    SbImage saved;
    EXPECT_TRUE(SoImageFile::read(SbString(png.toStdString()), saved));
    dialog = openDialog("Load...");
    ASSERT_TRUE(dialog);
    end(); // with the dialog open
    support::flush();
    EXPECT_EQ(services.done(), 0);
}

} // namespace
