#include "mirabo/preferences/Settings.h"
#include "mirabo/tree/SoMiraboAddDialog.h"

#include <kalmyr/base/SoRef.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/io/SoDB.h>
#include <kalmyr/shapes/SoCube.h>

#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>

#include <gtest/gtest.h>

namespace {

class AddDialogTest : public testing::Test {
protected:
    AddDialogTest()
    {
        SoDB::init();
        mirabo::releaseSettings();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_folder.path());
        open();
    }
    ~AddDialogTest() override
    {
        delete dialog;
        mirabo::releaseSettings();
    }

    void open()
    {
        delete dialog;
        dialog = new SoMiraboAddDialog;
        dialog->show();
        dialog->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(dialog));
        const auto trees = dialog->findChildren<QTreeWidget*>();
        catalogue = trees[0]->columnCount() == 1 ? trees[0] : trees[1];
        fields = trees[0]->columnCount() == 1 ? trees[1] : trees[0];
        search = dialog->findChild<QLineEdit*>();
        for (QPushButton* button : dialog->findChildren<QPushButton*>())
            (button->text() == "&Add" ? add : cancel) = button;
    }
    QTreeWidgetItem* entry(const QString& text) const
    {
        const auto found = catalogue->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
        return found.isEmpty() ? nullptr : found.front();
    }
    QString current() const
    {
        return catalogue->currentItem() ? catalogue->currentItem()->text(0) : QString();
    }
    QPoint pointOf(QTreeWidgetItem* item) const
    {
        catalogue->scrollToItem(item);
        return catalogue->visualItemRect(item).center();
    }

    QTemporaryDir m_folder;
    QPointer<SoMiraboAddDialog> dialog;
    QTreeWidget* catalogue = nullptr;
    QTreeWidget* fields = nullptr;
    QLineEdit* search = nullptr;
    QPushButton* add = nullptr;
    QPushButton* cancel = nullptr;
};

TEST_F(AddDialogTest, ListsEveryTypeThatCanBeMadeUnderItsCategory)
{
    EXPECT_EQ(catalogue->headerItem()->text(0), "Type");
    const struct {
        const char* type;
        const char* category;
    } places[] = {{"Cube", "Shape"},      {"Selection", "Selection"},
                  {"Switch", "Switch"},   {"Coordinate3", "Topology"},
                  {"SpotLight", "Light"}, {"Complexity", "Property"}};
    for (const auto& place : places) {
        ASSERT_NE(entry(place.type), nullptr) << place.type;
        QTreeWidgetItem* category =
            entry(place.type)->parent() ? entry(place.type)->parent() : entry(place.type);
        EXPECT_EQ(category->text(0).toStdString(), place.category) << place.type;
    }
    int listed = 0;
    for (QTreeWidgetItemIterator at(catalogue, QTreeWidgetItemIterator::NoChildren); *at; ++at) {
        const SoType type = SoType::fromName((*at)->text(0).toStdString());
        if (!(*at)->parent() && type.isBad())
            continue; // an empty category
        EXPECT_TRUE(type.canCreateInstance()) << (*at)->text(0).toStdString();
        ++listed;
    }
    int creatable = 0;
    for (const SoType type : SoType::getAllDerivedFrom(SoNode::getClassTypeId()))
        creatable += type.canCreateInstance() && !type.getName().view().starts_with("Unknown");
    EXPECT_EQ(listed, creatable);
    EXPECT_EQ(entry("UnknownNode"), nullptr);
    EXPECT_EQ(entry("Shape")->parent(), nullptr) << "abstract, a category only";
    EXPECT_EQ(catalogue->findItems("Shape", Qt::MatchExactly | Qt::MatchRecursive).size(), 1);
    for (int i = 1; i < catalogue->topLevelItemCount(); ++i)
        EXPECT_LT(catalogue->topLevelItem(i - 1)->text(0), catalogue->topLevelItem(i)->text(0));
}

TEST_F(AddDialogTest, FindsTypesWhileTyping)
{
    QTest::keyClicks(search, "sphere");
    EXPECT_TRUE(current().contains("Sphere"));
    QTest::keyClick(search, Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(search->text(), "");
    QTest::keyClicks(search, "SoIndexedFaceS");
    EXPECT_EQ(current(), "IndexedFaceSet");
    QTest::keyClick(search, Qt::Key_F, Qt::ControlModifier);
    QTest::keyClicks(search, "no such type");
    EXPECT_EQ(current(), "");
    EXPECT_FALSE(add->isEnabled());
    // Two characters are never taken for the prefix.
    EXPECT_EQ(dialog->find("So", nullptr)->text(0).indexOf("so", 0, Qt::CaseInsensitive) >= 0,
              true);
    EXPECT_EQ(dialog->find("", nullptr), nullptr);
}

TEST_F(AddDialogTest, GoesAroundTheMatches)
{
    search->setText("Coordinate");
    QStringList seen;
    do {
        EXPECT_TRUE(current().contains("Coordinate")) << current().toStdString();
        EXPECT_FALSE(seen.contains(current())) << current().toStdString();
        seen << current();
        QTest::keyClick(search, Qt::Key_F3);
    } while (current() != seen.front() && seen.size() < 100);
    EXPECT_GT(seen.size(), 2);
    EXPECT_EQ(seen.size(),
              catalogue->findItems("Coordinate", Qt::MatchContains | Qt::MatchRecursive).size());
    search->setText("");
    QTest::keyClick(search, Qt::Key_F3);
    EXPECT_FALSE(current().isEmpty()) << "nothing to find, nothing changes";
}

TEST_F(AddDialogTest, TakesLettersTypedElsewhereIntoTheSearch)
{
    catalogue->setFocus();
    catalogue->setCurrentItem(entry("Shape"));
    QTest::keyClick(catalogue, Qt::Key_C);
    EXPECT_EQ(search->text(), "c");
    EXPECT_TRUE(search->hasFocus());
    catalogue->setFocus();
    catalogue->setCurrentItem(entry("Cube"));
    QTest::keyClick(catalogue, Qt::Key_Down);
    EXPECT_EQ(current(), "Cylinder") << "other keys are the tree's";
    QTest::keyClick(catalogue, Qt::Key_1);
    EXPECT_EQ(search->text(), "c1");
}

TEST_F(AddDialogTest, AddsSeveralNodesAndStaysOpen)
{
    std::vector<SoRef<SoNode>> added;
    QObject::connect(dialog, &SoMiraboAddDialog::addRequested, dialog,
                     [&](SoNode* node) { added.emplace_back(node); });
    catalogue->setCurrentItem(entry("Shape"));
    EXPECT_FALSE(add->isEnabled());
    QTest::mouseDClick(catalogue->viewport(), Qt::LeftButton, {}, pointOf(entry("Shape")));
    EXPECT_TRUE(added.empty()) << "a category";
    catalogue->setCurrentItem(entry("Cube"));
    EXPECT_TRUE(add->isEnabled());
    QTest::mouseClick(add, Qt::LeftButton);
    QTest::mouseClick(catalogue->viewport(), Qt::LeftButton, {}, pointOf(entry("Cone")));
    QTest::mouseDClick(catalogue->viewport(), Qt::LeftButton, {}, pointOf(entry("Cone")));
    search->setFocus();
    QTest::keyClick(search, Qt::Key_Return);
    ASSERT_EQ(added.size(), 3u);
    EXPECT_EQ(added[0]->getTypeId(), SoCube::getClassTypeId());
    EXPECT_EQ(added[1]->getTypeId().getName(), "Cone");
    EXPECT_NE(added[1].get(), added[2].get());
    EXPECT_TRUE(dialog->isVisible());

    open(); // the last type is chosen again
    EXPECT_EQ(current(), "Cone");
    EXPECT_TRUE(add->isEnabled());
    QTest::mouseClick(cancel, Qt::LeftButton);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(dialog.isNull());
}

TEST_F(AddDialogTest, ShowsTheFieldsOfTheChosenTypeWithTheirDefaults)
{
    catalogue->setCurrentItem(entry("Cube"));
    ASSERT_FALSE(fields->findItems("width", Qt::MatchExactly).isEmpty());
    EXPECT_EQ(fields->findItems("width", Qt::MatchExactly).front()->text(1), "2");
    catalogue->setCurrentItem(entry("Shape"));
    EXPECT_EQ(fields->topLevelItemCount(), 0);
    // Every type can be looked at.
    for (QTreeWidgetItemIterator at(catalogue); *at; ++at)
        catalogue->setCurrentItem(*at);
}

TEST_F(AddDialogTest, BearsThatAReceiverDeletesIt)
{
    QObject::connect(dialog, &SoMiraboAddDialog::addRequested, [this](SoNode*) { delete dialog; });
    catalogue->setCurrentItem(entry("Cube"));
    dialog->addNode();
    EXPECT_TRUE(dialog.isNull());
}

} // namespace
