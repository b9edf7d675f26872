#include "mirabo/preferences/TextStyle.h"
#include "TreeTestScene.h"

#include <kalmyr/nodes/SoMaterial.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/nodes/SoTransform.h>
#include <kalmyr/shapes/SoCube.h>

#include <QApplication>
#include <QImage>

#include <algorithm>
#include <cstdlib>

namespace {

QPalette darkPalette()
{
    QPalette palette;
    palette.setColor(QPalette::Base, QColor(35, 38, 41));
    palette.setColor(QPalette::Window, QColor(49, 54, 59));
    palette.setColor(QPalette::Button, QColor(49, 54, 59));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(role, QColor(239, 240, 241));
    return palette;
}

/// The greatest contrast between the background and anything in the cell.
double contrastIn(const QImage& picture, const QRect& cell, const QColor& background)
{
    double contrast = 1;
    for (int y = cell.top(); y <= cell.bottom(); ++y)
        for (int x = cell.left(); x <= cell.right(); ++x)
            contrast = std::max(contrast, mirabo::contrastOf(picture.pixelColor(x, y), background));
    return contrast;
}

class TreeLook : public TreeTest {
protected:
    TreeLook()
    {
        auto* shared = new SoSeparator;
        shared->setName("Wheel");
        shared->addChild(new SoMaterial);
        shared->addChild(new SoCube);
        for (int i = 0; i < 3; ++i) {
            auto* axle = new SoGroup;
            axle->addChild(new SoTransform);
            axle->addChild(shared);
            root->addChild(axle);
        }
        auto* holder = new FieldHolder;
        holder->one = new SoCube;
        root->addChild(holder);
        view.showReferences(row(shared));
        view.setCurrentItem(row(holder));
    }
    ~TreeLook() override { QApplication::setPalette(QPalette()); }

    /// MIRABO_TREE_PICTURES names a folder for those who want to see it.
    QImage picture(const char* name)
    {
        view.resize(560, 560);
        view.show();
        view.expandAll();
        pass();
        if (const char* folder = std::getenv("MIRABO_TREE_PICTURES"))
            view.grab().save(QString("%1/%2.png").arg(folder, name));
        return view.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    }
    QRect cellOf(const SoTreeViewItem* item, int column) const
    {
        const QRect line = view.visualItemRect(const_cast<SoTreeViewItem*>(item));
        return {view.columnViewportPosition(column), line.top() + 2, view.columnWidth(column),
                line.height() - 4};
    }
    void expectReadable(const QImage& shot, const QColor& background)
    {
        const SoTreeViewItem* wheel = view.rootItem()->childItem(1)->childItem(1);
        ASSERT_TRUE(wheel->hasReferenceMark());
        for (const int column : {SoTreeViewItem::Type, SoTreeViewItem::Name,
                                 SoTreeViewItem::ReferenceCount, SoTreeViewItem::ReferenceMark})
            EXPECT_GT(contrastIn(shot, cellOf(wheel, column), background),
                      column == SoTreeViewItem::ReferenceMark ? 2.9 : 3.5) // edges are soft
                << column;
        const SoTreeViewItem* chosen = row(view.getCurrentNode());
        EXPECT_GT(contrastIn(shot, cellOf(chosen, SoTreeViewItem::Type), background), 3);
        EXPECT_EQ(cellOf(chosen, 0).height(), 27 - 4);
    }
};

} // namespace

TEST_F(TreeLook, IsReadableOnLightDesktops)
{
    expectReadable(picture("light"), Qt::white);
}

TEST_F(TreeLook, IsReadableOnDarkDesktops)
{
    QApplication::setPalette(darkPalette());
    expectReadable(picture("dark"), darkPalette().color(QPalette::Base));
}

TEST_F(TreeLook, BringsDeepRowsIntoSight)
{
    constexpr int kDepth = 60;
    SoGroup* at = root.get();
    for (int i = 0; i < kDepth; ++i) {
        auto* next = new SoGroup;
        at->addChild(next);
        at = next;
    }
    picture("deep");
    view.showItem(row(at));
    pass();
    const auto textRect = [this] {
        return view.visualRect(view.currentIndex().siblingAtColumn(SoTreeViewItem::Type));
    };
    EXPECT_GE(textRect().left(), 0);
    EXPECT_LT(textRect().left(), view.viewport()->width() / 2);
    EXPECT_GE(textRect().width(), view.fontMetrics().horizontalAdvance("Group"));
    view.showItem(view.rootItem());
    pass();
    EXPECT_GE(textRect().left(), 0);
}
