#include "PageSupport.h"

#include "mirabo/preferences/SoViewerPreferences.h"
#include "mirabo/preferences/ViewerLook.h"

#include <QApplication>
#include <QButtonGroup>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

#include <memory>

namespace {

/// A viewer that remembers what it was told.
struct Viewer {
    int type = 6;
    QColor background{10, 20, 30};
    int calls = 0;
};

class Look final : public mirabo::ViewerLook {
public:
    explicit Look(Viewer& viewer) : m_viewer(viewer) {}
    int getTransparencyType() const override { return m_viewer.type; }
    void setTransparencyType(int type) override
    {
        m_viewer.type = type;
        ++m_viewer.calls;
    }
    QColor getBackground() const override { return m_viewer.background; }
    void setBackground(const QColor& color) override
    {
        m_viewer.background = color;
        ++m_viewer.calls;
    }

private:
    Viewer& m_viewer;
};

class ViewerPage : public PageTest {
protected:
    std::unique_ptr<SoViewerPreferences> open()
    {
        return std::make_unique<SoViewerPreferences>(std::make_unique<Look>(viewer));
    }
    static QList<QRadioButton*> buttons(const QWidget& page)
    {
        return page.findChildren<QRadioButton*>();
    }
    static QRadioButton* checked(const QWidget& page)
    {
        for (QRadioButton* button : buttons(page))
            if (button->isChecked())
                return button;
        return nullptr;
    }
    static QColor swatch(const QWidget& page)
    {
        const auto& button = control<QPushButton>(page, "m_backgroundButton");
        const QImage image = button.icon().pixmap(20, 20).toImage();
        return image.pixelColor(image.width() / 2, image.height() / 2);
    }

    Viewer viewer;
};

} // namespace

TEST_F(ViewerPage, SetsTheTypeOfEveryButton)
{
    const auto page = open();
    ASSERT_NE(checked(*page), nullptr);
    EXPECT_EQ(checked(*page)->text(), "&Sorted Blended Transparency");
    std::vector<int> types;
    for (QRadioButton* button : buttons(*page)) {
        button->click();
        page->save();
        types.push_back(viewer.type);
        const auto again = open();
        ASSERT_NE(checked(*again), nullptr);
        EXPECT_EQ(checked(*again)->text(), button->text());
    }
    EXPECT_EQ(types, (std::vector<int>{0, 3, 4, 6, 7, 8, 10, 12, 13}));
}

TEST_F(ViewerPage, LeavesWhatItCannotShow)
{
    viewer.type = 2;
    const auto page = open();
    EXPECT_EQ(checked(*page), nullptr);
    page->save();
    EXPECT_EQ(viewer.calls, 0);
    buttons(*page).first()->click();
    page->reInit();
    EXPECT_EQ(checked(*page), nullptr);
    page->save();
    EXPECT_EQ(viewer.type, 2) << "loaded anew";
    page->show();
    QApplication::setActiveWindow(page.get());
    buttons(*page).first()->setFocus();
    QTest::keyClick(buttons(*page).first(), Qt::Key_Space);
    QTest::keyClick(buttons(*page).first(), Qt::Key_Down);
    ASSERT_NE(checked(*page), nullptr);
    page->save();
    EXPECT_EQ(viewer.type, 3) << "keys choose as well";
}

TEST_F(ViewerPage, SetsTheBackgroundThatWasChosen)
{
    const auto page = open();
    EXPECT_EQ(swatch(*page), viewer.background);
    control<QPushButton>(*page, "m_backgroundButton").click();
    EXPECT_EQ(colorDialog(*page)->currentColor(), viewer.background);
    chooseColor(*page, QColor(200, 100, 50));
    EXPECT_EQ(swatch(*page), QColor(200, 100, 50));
    EXPECT_EQ(viewer.calls, 0) << "not before it is saved";
    page->save();
    EXPECT_EQ(viewer.background, QColor(200, 100, 50));
    viewer.background = Qt::black; // by the host
    page->save();
    EXPECT_EQ(viewer.background, QColor(Qt::black)) << "saved once";
    EXPECT_TRUE(mirabo::settings().allKeys().isEmpty());
}
