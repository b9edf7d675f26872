// Exports and prints from the real window, with its dialogs.
#include "mirabo/extension/MrbServicesImpl.h"
#include "StandaloneSupport.h"
#include "support/Clock.h"
#include "support/DialogAnswers.h"
#include "support/ErrorGuard.h"
#include "support/WriteLocked.h"

#include <kalmyr/gui/SoSceneManager.h>
#include <kalmyr/nodes/SoSeparator.h>
#include <kalmyr/plotrel/SoPlotrel.h>
#include <kalmyr/tilevex/TvSymTool.h>

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>
#include <QProgressDialog>
#include <QPushButton>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <cstdlib>
#include <optional>

namespace {

using mirabo::ActionId;
using support::DialogAnswers;
using support::SlowWork;

/// A red cube in the middle of the view, flatly lit and turned a little.
constexpr char kScene[] =
    "#Kalmyr V1.0 ascii\n"
    "Separator { LightModel { model BASE_COLOR } Material { diffuseColor 1 0 0 }"
    " Transform { rotation 0 0 1 0.3 }"
    " Cube { } }\n";

/// Takes the place of the desktop's file manager.
class Desktop final : public QObject {
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler("file", this, "open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler("file"); }

    QString opened;

public Q_SLOTS:
    void open(const QUrl& url) { opened = url.toLocalFile(); }
};

bool isRed(QRgb color)
{
    return qRed(color) > 200 && qGreen(color) < 60 && qBlue(color) < 60;
}

class Exporting : public StandaloneTest {
protected:
    void SetUp() override
    {
        StandaloneTest::SetUp();
        ASSERT_TRUE(viewer->openSceneFile(write("scene.ky", kScene)));
        support::flush();
    }

    QString at(const QString& name) const { return m_folder.filePath(name); }
    static QByteArray bytesOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
    }
    QString write(const QString& name, const QByteArray& text) const
    {
        QFile file(at(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return at(name);
    }
    /// All files, hidden ones included.
    QStringList files() const
    {
        return QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }
    void trigger(ActionId id) const
    {
        support::flush();
        QAction* action = window()->action(id);
        EXPECT_TRUE(action->isEnabled()) << action->text().toStdString();
        action->trigger();
    }
    /// Exports; how many dialogs there were.
    int exportWith(std::vector<DialogAnswers::Answer> how) const
    {
        DialogAnswers answers(std::move(how));
        trigger(ActionId::Export);
        support::flush();
        return answers.count();
    }
    static DialogAnswers::Answer choose(const QString& filter, const QString& path)
    {
        return [filter, path](QDialog* dialog) {
            auto* files = qobject_cast<QFileDialog*>(dialog);
            ASSERT_TRUE(files) << dialog->windowTitle().toStdString();
            EXPECT_EQ(files->windowTitle(), "Choose a filename to export under");
            EXPECT_TRUE(files->nameFilters().contains(filter));
            files->selectNameFilter(filter);
            files->findChild<QLineEdit*>("fileNameEdit")->setText(path);
            dialog->accept();
        };
    }
    static void press(QDialog* dialog, const QString& text)
    {
        for (QAbstractButton* button : dialog->findChildren<QAbstractButton*>())
            if (button->text() == text)
                return button->click();
        ADD_FAILURE() << "no button " << text.toStdString();
    }
    QString told() const { return window()->statusBar()->currentMessage(); }
    QLabel* note() const { return window()->findChild<QLabel*>("statusNote"); }
    /// A picture of the first page, looked at by a program that is installed; null without it.
    QImage pageOf(const QString& path, const std::string& program) const
    {
        const std::string target = at("page").toStdString();
        const std::string source = path.toStdString();
        const std::string command =
            program == "pdftoppm"
                ? "pdftoppm -r 50 -png -singlefile " + source + " " + target
                : "gs -q -dBATCH -dNOPAUSE -sDEVICE=png16m -r50 -o " + target + ".png " + source;
        if (std::system(("command -v " + program + " >/dev/null").c_str()) != 0)
            return {};
        EXPECT_EQ(std::system((command + " >/dev/null 2>&1").c_str()), 0) << command;
        QImage page(at("page.png"));
        QFile::remove(at("page.png"));
        EXPECT_FALSE(page.isNull()) << path.toStdString();
        return page;
    }

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(Exporting, WritesEachFormat)
{
    const struct {
        const char* filter;
        const char* extension;
        QByteArray begin;
        int at = 0;
    } formats[] = {
        {"JPG - JPEG", ".jpg", "\xff\xd8\xff"},
        {"BMP - Windows Bitmap", ".bmp", "BM"},
        {"TIFF - Tag Image File Format", ".tif", QByteArray("II*\0", 4)},
        {"PS - PostScript", ".ps", "%!PS"},
        {"RGB - SGI Image File", ".rgb", "\x01\xda"},
        {"PDF - using Plotrel", ".pdf", "%PDF-1."},
        {"U3D - using Plotrel", ".u3d", QByteArray("U3D\0", 4)},
        {"PS - using Plotrel", ".ps", "%!PS"},
        {"CGM - using Plotrel", ".cgm", QByteArray("\0", 1)},
        {"EMF/GDI - using Plotrel", ".emf", " EMF", 40},
        {"HPGL - using Plotrel", ".hpgl", "IN"},
    };
    QStringList filters;
    exportWith({[&filters](QDialog* dialog) {
        filters = static_cast<QFileDialog*>(dialog)->nameFilters();
        dialog->reject();
    }});
    ASSERT_EQ(filters.size(), static_cast<int>(std::size(formats)));
    int number = 0;
    for (const auto& format : formats) {
        SCOPED_TRACE(format.filter);
        EXPECT_EQ(filters[number], format.filter);
        const QString name = QString("file%1").arg(number++);
        EXPECT_EQ(exportWith({choose(format.filter, at(name))}), 1);
        const QString path = at(name + format.extension);
        const QByteArray bytes = bytesOf(path);
        EXPECT_EQ(bytes.mid(format.at, format.begin.size()), format.begin);
        EXPECT_GT(bytes.size(), 150);
        ASSERT_TRUE(note());
        EXPECT_TRUE(note()->text().startsWith(name + format.extension + " was written"));
    }
    EXPECT_EQ(files().size(), 12) << files().join(' ').toStdString();
}

TEST_F(Exporting, ShowsWhatTheViewShows)
{
    SoSceneManager* manager = MrbServicesImpl::getInstance()->getSceneManager();
    manager->setBackgroundColor(SbColor(0, 0, 1));
    const SbVec2s size = manager->getViewportRegion().getWindowSize();
    exportWith({choose("BMP - Windows Bitmap", at("a"))});
    exportWith({choose("JPG - JPEG", at("a"))});
    for (const char* name : {"a.bmp", "a.jpg"}) {
        SCOPED_TRACE(name);
        const QImage image(at(name));
        EXPECT_EQ(image.width(), size[0]);
        EXPECT_EQ(image.height(), size[1]);
        EXPECT_TRUE(isRed(image.pixel(image.rect().center())));
        EXPECT_GT(qBlue(image.pixel(2, 2)), 240);
    }
    // Smooth edges have mixed colours.
    const QImage image = QImage(at("a.bmp")).convertToFormat(QImage::Format_RGB32);
    bool isMixed = false;
    for (int x = 0; x < image.width(); ++x) {
        const int blue = qBlue(image.pixel(x, image.height() / 2));
        isMixed = isMixed || (blue > 40 && blue < 215);
    }
    EXPECT_TRUE(isMixed);
    // Whatever the style that the view has.
    manager->setDrawStyle(SoGLRenderAction::BOUNDING_BOX);
    exportWith({choose("BMP - Windows Bitmap", at("box"))});
    const QImage box(at("box.bmp"));
    EXPECT_GT(qBlue(box.pixel(box.rect().center())), 240) << "lines, and nothing between them";
    manager->setDrawStyle(SoGLRenderAction::AS_IS);
    // Drawings have the same proportions, in the middle of a page.
    const struct {
        const char* filter;
        const char* name;
        const char* program;
    } drawings[] = {{"PDF - using Plotrel", "b.pdf", "pdftoppm"},
                    {"PS - using Plotrel", "b.ps", "gs"},
                    {"PS - PostScript", "c.ps", "gs"}};
    for (const auto& drawing : drawings) {
        SCOPED_TRACE(drawing.filter);
        exportWith({choose(drawing.filter, at(drawing.name))});
        const QImage page = pageOf(at(drawing.name), drawing.program);
        if (page.isNull())
            continue;
        EXPECT_TRUE(isRed(page.pixel(page.rect().center())));
        int left = page.width(), right = 0, top = page.height(), bottom = 0;
        for (int y = 0; y < page.height(); ++y) {
            for (int x = 0; x < page.width(); ++x) {
                if (page.pixel(x, y) == qRgb(255, 255, 255))
                    continue;
                left = std::min(left, x);
                right = std::max(right, x + 1);
                top = std::min(top, y);
                bottom = std::max(bottom, y + 1);
            }
        }
        EXPECT_NEAR(double(right - left) / (bottom - top), double(size[0]) / size[1], 0.02);
    }
    EXPECT_NE(bytesOf(at("b.ps")), bytesOf(at("c.ps")));
}

TEST_F(Exporting, AddsTheExtensionToNamesThatDoNotHoldIt)
{
    ASSERT_TRUE(QDir(at("")).mkdir("of.PDFs"));
    exportWith({choose("PDF - using Plotrel", at("page.PDF.old"))});
    exportWith({choose("PDF - using Plotrel", at("of.PDFs/page"))});
    exportWith({choose("PS - using Plotrel", at("page"))});
    EXPECT_EQ(files(), (QStringList{"page.PDF.old", "page.ps", "scene.ky"}));
    EXPECT_TRUE(bytesOf(at("of.PDFs/page")).startsWith("%PDF"));
    // A name that becomes that of a file that is there is asked about.
    write("page.jpg", "old");
    QString question;
    const int dialogs = exportWith({choose("JPG - JPEG", at("page")), [&question](QDialog* dialog) {
                                        question = static_cast<QMessageBox*>(dialog)->text();
                                        press(dialog, "&No");
                                    }});
    EXPECT_EQ(dialogs, 2);
    EXPECT_TRUE(question.contains("page.jpg"));
    EXPECT_EQ(bytesOf(at("page.jpg")), "old");
}

TEST_F(Exporting, ProposesTheDocumentsNameAndTheLastFilter)
{
    const auto propose = [this] {
        QString proposal;
        exportWith({[&](QDialog* dialog) {
            auto* files = static_cast<QFileDialog*>(dialog);
            proposal = files->directory().path() + "/"
                       + files->findChild<QLineEdit*>("fileNameEdit")->text() + ", "
                       + files->selectedNameFilter();
            dialog->reject();
        }});
        return proposal;
    };
    EXPECT_EQ(propose(), at("scene") + ", JPG - JPEG");
    exportWith({choose("PDF - using Plotrel", at("a"))});
    EXPECT_EQ(propose(), at("scene") + ", PDF - using Plotrel");
    viewer->closeScene();
    EXPECT_EQ(propose(), QDir::currentPath() + "/./Untitled File, PDF - using Plotrel");
    EXPECT_EQ(files(), (QStringList{"a.pdf", "scene.ky"})) << "rejected dialogs write nothing";
}

TEST_F(Exporting, ListsTheFilesOfTheChosenFormat)
{
    write("a.jpg", "");
    write("b.pdf", "");
    exportWith({[](QDialog* dialog) {
        const auto* view = dialog->findChild<QListView*>("listView");
        const auto lists = [view](const QString& name) {
            return support::passUntil([&] {
                const QModelIndex folder = view->rootIndex();
                return view->model()->rowCount(folder) == 1
                       && view->model()->index(0, 0, folder).data().toString() == name;
            });
        };
        EXPECT_TRUE(lists("a.jpg"));
        auto* types = dialog->findChild<QComboBox*>("fileTypeCombo");
        while (types->currentText() != "PDF - using Plotrel")
            QTest::keyClick(types, Qt::Key_Down);
        EXPECT_TRUE(lists("b.pdf"));
        dialog->reject();
    }});
}

TEST_F(Exporting, PostsOneErrorAndLeavesNoHalfFile)
{
    const char* filters[] = {"JPG - JPEG",          "RGB - SGI Image File", "PDF - using Plotrel",
                             "U3D - using Plotrel", "PS - using Plotrel",   "HPGL - using Plotrel"};
    const auto fails = [this](std::vector<DialogAnswers::Answer> how) {
        auto errors = support::expectErrors();
        const auto dialogs = static_cast<int>(how.size());
        EXPECT_EQ(exportWith(std::move(how)), dialogs) << "no dialog tells of it";
        ASSERT_EQ(errors.count(), 1u);
        EXPECT_NE(errors.texts().front().find("SoMiraboViewer::printFile()"), std::string::npos);
        EXPECT_NE(errors.texts().front().find("Unable to do export"), std::string::npos);
        EXPECT_TRUE(told().endsWith(" could not be exported")) << told().toStdString();
        EXPECT_FALSE(note());
    };
    const auto replace = [](QDialog* dialog) { press(dialog, "&Yes"); };
    // A device without room takes the place of a full disk.
    const QString full = at("full.jpg.rgb.pdf.u3d.ps.hpgl");
    ASSERT_TRUE(QFile::link("/dev/full", full));
    for (const char* filter : filters) {
        SCOPED_TRACE(filter);
        fails({choose(filter, "/dev/null/file")});
        fails({choose(filter, full), replace});
    }
    QFile::remove(full);
    // With nothing to draw, the file of the last export stays.
    viewer->closeScene();
    const QString old = write("old.u3d", "old");
    fails({choose("U3D - using Plotrel", old), replace});
    EXPECT_EQ(bytesOf(old), "old");
    EXPECT_EQ(files(), (QStringList{"old.u3d", "scene.ky"}));
}

TEST_F(Exporting, IsCancelledByButtonAndKey)
{
    const QString old = write("old.pdf", "old");
    const SlowWork slow;
    const auto cancel = [](QDialog* dialog) {
        ASSERT_TRUE(qobject_cast<QProgressDialog*>(dialog));
        EXPECT_TRUE(static_cast<QProgressDialog*>(dialog)->labelText().startsWith("Exporting "));
        press(dialog, "Cancel");
    };
    const auto escape = [](QDialog* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); };
    const char* filters[] = {"JPG - JPEG", "PDF - using Plotrel", "U3D - using Plotrel",
                             "CGM - using Plotrel"};
    for (const char* filter : filters) {
        SCOPED_TRACE(filter);
        for (const DialogAnswers::Answer& how :
             {DialogAnswers::Answer(cancel), DialogAnswers::Answer(escape)}) {
            EXPECT_EQ(exportWith({choose(filter, at("new.pdf.jpg.u3d.cgm")), how}), 2);
            EXPECT_EQ(told(), "The export of new.pdf.jpg.u3d.cgm was cancelled");
            EXPECT_FALSE(window()->findChild<QProgressDialog*>());
        }
    }
    EXPECT_EQ(files(), (QStringList{"old.pdf", "scene.ky"}));
    exportWith({choose("PDF - using Plotrel", old), [](QDialog* dialog) { press(dialog, "&Yes"); },
                cancel});
    EXPECT_EQ(bytesOf(old), "old");
}

// The host goes on while the user looks at the progress.
TEST_F(Exporting, WritesTheSceneOfTheBeginning)
{
    const char* names[] = {"a.bmp", "a.pdf", "a.u3d"};
    const char* filters[] = {"BMP - Windows Bitmap", "PDF - using Plotrel", "U3D - using Plotrel"};
    for (int i = 0; i < 3; ++i) {
        SCOPED_TRACE(names[i]);
        ASSERT_TRUE(viewer->openSceneFile(at("scene.ky")));
        exportWith({choose(filters[i], at(QString("before_") + names[i]))});
        const SlowWork slow;
        int changes = 0;
        exportWith({choose(filters[i], at(names[i])), [&](QDialog*) {
                        ++changes;
                        static_cast<SoGroup*>(viewer->getScene())->removeAllChildren();
                        viewer->closeScene();
                        viewer->exportImage(); // one at a time
                    }});
        EXPECT_EQ(changes, 1);
        const QByteArray written = bytesOf(at(names[i]));
        EXPECT_NEAR(written.size(), bytesOf(at(QString("before_") + names[i])).size(), 20);
    }
    EXPECT_TRUE(isRed(QImage(at("a.bmp")).pixel(QImage(at("a.bmp")).rect().center())));
}

TEST_F(Exporting, WaitsUntilOtherThreadsHaveEdited)
{
    const SlowWork slow;
    std::optional<support::WriteLocked> edit(std::in_place);
    const QString path = at("a.pdf");
    exportWith({choose("PDF - using Plotrel", path), [&](QDialog* dialog) {
                    EXPECT_EQ(static_cast<QProgressDialog*>(dialog)->value(), 0);
                    press(dialog, "Cancel");
                }});
    EXPECT_EQ(files(), QStringList{"scene.ky"});
    exportWith({choose("PDF - using Plotrel", path), [&](QDialog*) { edit.reset(); }});
    EXPECT_TRUE(bytesOf(path).startsWith("%PDF"));
}

TEST_F(Exporting, EndsWithTheTool)
{
    EXPECT_TRUE(TvSymTool::isInitialized("Plotrel"));
    const SlowWork slow;
    for (const char* filter : {"JPG - JPEG", "PDF - using Plotrel"}) {
        SCOPED_TRACE(filter);
        bool stopped = false;
        exportWith({choose(filter, at("new")), [&stopped](QDialog*) {
                        SoMiraboImpl::stop();
                        stopped = true;
                    }});
        EXPECT_TRUE(stopped);
        EXPECT_EQ(files(), QStringList{"scene.ky"});
        SoMiraboImpl::processEvents();
        EXPECT_FALSE(SoMiraboViewer::exists());
        EXPECT_FALSE(SoPlotrel::isInitialized());
        StandaloneTest::SetUp();
        ASSERT_TRUE(viewer->openSceneFile(at("scene.ky")));
    }
}

TEST_F(Exporting, OpensTheFolderOfWhatWasWritten)
{
    Desktop desktop;
    exportWith({choose("JPG - JPEG", at("a<b>&c"))});
    ASSERT_TRUE(note());
    EXPECT_TRUE(note()->isVisible());
    EXPECT_TRUE(note()->text().contains("a&lt;b&gt;&amp;c.jpg"));
    EXPECT_EQ(note()->toolTip(), at("a<b>&c.jpg"));
    note()->setFocus();
    QTest::keyClick(note(), Qt::Key_Tab);
    Q_EMIT note()->linkActivated("folder");
    EXPECT_EQ(desktop.opened + "/a<b>&c.jpg", at("a<b>&c.jpg"));
    exportWith({choose("JPG - JPEG", at("second"))});
    support::flush();
    EXPECT_EQ(window()->findChildren<QLabel*>("statusNote").size(), 1);
}

TEST_F(Exporting, PrintsThePictureInItsOwnSize)
{
    MrbServicesImpl::getInstance()->getSceneManager()->setBackgroundColor(SbColor(0, 0, 1));
    const SbVec2s size =
        MrbServicesImpl::getInstance()->getSceneManager()->getViewportRegion().getWindowSize();
    const auto print = [this](QDialog::DialogCode code) {
        DialogAnswers answers({[&](QDialog* dialog) {
            auto* printing = qobject_cast<QPrintDialog*>(dialog);
            ASSERT_TRUE(printing);
            EXPECT_EQ(printing->printer()->resolution(), window()->logicalDpiX());
            printing->printer()->setOutputFileName(at("print.pdf"));
            for (QLineEdit* edit : dialog->findChildren<QLineEdit*>("filename"))
                edit->setText(at("print.pdf"));
            dialog->done(code);
        }});
        trigger(ActionId::Print);
        EXPECT_EQ(answers.count(), 1);
    };
    print(QDialog::Rejected);
    EXPECT_EQ(files(), QStringList{"scene.ky"});
    EXPECT_FALSE(note());
    print(QDialog::Accepted);
    EXPECT_TRUE(bytesOf(at("print.pdf")).startsWith("%PDF"));
    ASSERT_TRUE(note());
    EXPECT_TRUE(note()->text().startsWith("print.pdf was written"));
    const QImage page = pageOf(at("print.pdf"), "pdftoppm");
    // A file that cannot be written.
    {
        auto errors = support::expectErrors();
        DialogAnswers answers({[](QDialog* dialog) {
            static_cast<QPrintDialog*>(dialog)->printer()->setOutputFileName("/dev/null/a.pdf");
            dialog->done(QDialog::Accepted);
        }});
        trigger(ActionId::Print);
        EXPECT_TRUE(errors.contains("SoMiraboViewer::printFile(): Unable to print"));
    }
    EXPECT_EQ(told(), "The scene could not be printed");
    if (page.isNull())
        GTEST_SKIP() << "pdftoppm is not installed";
    // Its left upper corner is that of the picture, one of whose points is one of the screen.
    const int blueAt = std::min(page.height() - 1, size[1] * 50 / window()->logicalDpiY() / 10);
    EXPECT_GT(qBlue(page.pixel(page.width() / 2, blueAt)), 200);
    EXPECT_LT(qRed(page.pixel(page.width() / 2, blueAt)), 60);
}

#include "ExportTest.moc"
