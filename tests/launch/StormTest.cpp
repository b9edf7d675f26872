// The host, an extension, the user and Qt end and start the tool at random moments from random
// places. Every round has a seed of its own, which a failure names and MIRABO_STORM_SEED repeats;
// MIRABO_STORM_ROUNDS asks for more rounds from there on.

#include "LaunchSupport.h"
#include "support/TestExtension.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/gui/SoGuiExaminerViewer.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <mirabo/extender/MrbServices.h>
#include <mirabo/launch/SoMirabo.h>

#include <QAction>
#include <QContextMenuEvent>
#include <QDialog>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMetaMethod>
#include <QMimeData>
#include <QPointer>
#include <QProgressDialog>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <QWindow>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>
#include <string>
#include <thread>
#include <vector>

Q_DECLARE_METATYPE(std::function<void()>)

namespace {

constexpr int kRounds = 200;
constexpr int kFullRounds = 10000;
constexpr int kSteps = 6; ///< what the user does in a round
constexpr int kMaxPasses = 50;
constexpr unsigned kDrop = 8; ///< what the user does: a file is dropped

unsigned firstSeed()
{
    return qEnvironmentVariableIsSet("MIRABO_STORM_SEED")
               ? qEnvironmentVariable("MIRABO_STORM_SEED").toUInt()
               : 1;
}

int rounds()
{
    if (qEnvironmentVariableIsSet("MIRABO_STORM_ROUNDS"))
        return qEnvironmentVariable("MIRABO_STORM_ROUNDS").toInt();
    if (qEnvironmentVariableIsSet("MIRABO_STORM_SEED"))
        return 1;
    return qEnvironmentVariableIsSet("MIRABO_FULL") ? kFullRounds : kRounds;
}

/// The toolkit's clock, which leaps with every look at it while something long is to happen.
class LeapingClock {
public:
    LeapingClock()
    {
        SbTime::setSource([] {
            if (s_leaps)
                s_ahead = s_ahead + 0.5;
            const std::chrono::duration<double> now =
                std::chrono::steady_clock::now().time_since_epoch();
            return SbTime(now.count() + s_ahead);
        });
    }
    ~LeapingClock() { SbTime::setSource(nullptr); }
    LeapingClock(const LeapingClock&) = delete;
    LeapingClock& operator=(const LeapingClock&) = delete;

    static void setLeaping(bool on) { s_leaps = on; }

private:
    static inline std::atomic<bool> s_leaps{false};
    static inline std::atomic<double> s_ahead{0}; ///< seconds
};

/// One round: a host with its scene, a tool, and something that happens once, somewhere.
class Round final : public QObject {
    Q_OBJECT

public:
    Round(unsigned seed, const QString& file) : m_random(seed), m_file(file)
    {
        m_act = below(9);
        endLoop();
    }
    ~Round() override { m_sensor.detach(); }

    void run()
    {
        if (below(2))
            m_parent = new QWidget;
        if (below(2)) {
            m_area = SoRef<SoGuiExaminerViewer>(new SoGuiExaminerViewer);
            m_area->setSceneGraph(m_scene.get());
        }
        arm(below(9));
        start();
        if (QWidget* frame = window())
            frame->resize(1200, 800);
        connectSignals();
        for (int step = 0; step < kSteps; ++step) {
            doSomething(m_inReading && step == 0 ? kDrop : below(10));
            QCoreApplication::processEvents();
            if (below(4) == 0)
                connectSignals();
        }
        for (int passes = 0; passes < kMaxPasses && isInLoop(); ++passes)
            QCoreApplication::processEvents();
        qApp->setProperty("taskAt", QVariant());
        qApp->setProperty("task", QVariant());
        m_sensor.detach();
        m_acted = true;
        SoMirabo::stop();
    }

    static QWidget* window()
    {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->objectName() == "SoMiraboMainFrame")
                return widget;
        return nullptr;
    }
    const SoRef<SoSeparator>& scene() const { return m_scene; }
    bool hasActed() const { return m_exploded; }
    bool hasActedWhileReading() const { return m_exploded && m_inReading; }
    /// What the host itself has left.
    void endHost()
    {
        delete m_parent.data();
        m_area = SoRef<SoGuiExaminerViewer>();
    }

public Q_SLOTS:
    /// Happens once a round, wherever it comes first.
    void explode()
    {
        if (std::exchange(m_acted, true))
            return;
        m_exploded = true;
        act(m_act);
    }

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(m_random()) % limit; }
    template <class List>
    auto any(const List& list) -> decltype(list[0])
    {
        return list[static_cast<int>(below(static_cast<unsigned>(list.size())))];
    }

    static bool isPainting()
    {
        const QWidgetList all = QApplication::allWidgets();
        return std::any_of(all.begin(), all.end(), [](const QWidget* widget) {
            return widget->testAttribute(Qt::WA_WState_InPaintEvent);
        });
    }

    void start()
    {
        if (m_inReading || below(5) == 0)
            SoLibMirabo::instance()->m_mirabo_startStandalone(0, nullptr);
        else if (m_area && below(2))
            SoMirabo::start(static_cast<const SoRenderAreaCore*>(m_area.get()));
        else
            SoMirabo::start(m_scene.get(), m_parent.data());
    }

    void act(unsigned what)
    {
        switch (what) {
        case 0:
        case 1:
            return SoMirabo::stop();
        case 2:
            SoMirabo::stop();
            return start();
        case 3:
            SoMirabo::stop();
            SoMirabo::processEvents();
            return SoMirabo::stop();
        case 4:
            // Qt itself goes on with a window that it paints, or that got a right press.
            if (m_inRightPress || isPainting())
                return SoMirabo::stop();
            delete m_parent.data();
            return;
        case 5:
            if (QWidget* frame = window())
                frame->close();
            return start();
        case 6:
            m_area = SoRef<SoGuiExaminerViewer>();
            m_scene->removeAllChildren();
            return SoMirabo::stop();
        case 7:
            SoMirabo::start(m_scene.get());
            SoMirabo::processEvents();
            return;
        default:
            if (QWidget* frame = window())
                frame->deleteLater();
            return SoMirabo::stop();
        }
    }

    /// Chooses the place where it happens.
    void arm(unsigned where)
    {
        static const char* const kExtensionPlaces[] = {"activate",
                                                       "createView",
                                                       "getInfo",
                                                       "selectedNodeChanged",
                                                       "sceneGraphChanged",
                                                       "deactivate",
                                                       "execute",
                                                       "selectedFieldChanged",
                                                       "entry",
                                                       "load",
                                                       "menu entry"};
        m_inLoop = where == 0;
        m_inSignal = where == 1 || where == 2;
        if (where == 3) {
            m_sensor.setPriority(below(2) ? 0 : 100);
            m_sensor.attach(m_scene.get());
        } else if (where == 4) {
            QTimer::singleShot(0, this, &Round::explode);
        } else if (where == 5) {
            std::thread([this] {
                QMetaObject::invokeMethod(this, &Round::explode, Qt::QueuedConnection);
            }).join();
        } else if (where == 6) {
            m_inReading = true;
        } else if (where >= 7) {
            qApp->setProperty("taskAt", kExtensionPlaces[below(std::size(kExtensionPlaces))]);
            qApp->setProperty("task",
                              QVariant::fromValue(std::function<void()>([this] { explode(); })));
        }
    }

    /// Any signals of any objects of the tool.
    void connectSignals()
    {
        if (MrbServices* services = MrbServices::getInstance(); services && m_inSignal)
            connect(services, &MrbServices::selectedNodeChanged, this, &Round::explode);
        const QWidget* frame = window();
        if (!m_inSignal || !frame)
            return;
        const QMetaMethod slot = metaObject()->method(metaObject()->indexOfSlot("explode()"));
        const QList<QObject*> all = frame->findChildren<QObject*>();
        for (int i = 0; i < 5 && !all.isEmpty(); ++i) {
            const QObject* sender = any(all);
            const QMetaObject* type = sender->metaObject();
            const int method = static_cast<int>(below(unsigned(type->methodCount())));
            // A dying object is no place from which anything can be saved.
            if (type->method(method).methodType() == QMetaMethod::Signal
                && type->method(method).name() != "destroyed")
                connect(sender, type->method(method), this, slot);
        }
    }

    static bool isInLoop()
    {
        return QApplication::activeModalWidget() || QApplication::activePopupWidget();
    }

    /// Ends whatever loop runs, by its own means or from outside.
    void endLoop()
    {
        // A timer of its own each time: what is done here may enter the next loop.
        QTimer::singleShot(0, this, &Round::endLoop);
        const QPointer<QWidget> popup = QApplication::activePopupWidget();
        const QPointer<QWidget> modal = QApplication::activeModalWidget();
        if (m_inLoop && (popup || modal || m_dragging))
            explode();
        if (m_inReading && qobject_cast<QProgressDialog*>(modal))
            explode();
        if (m_dragging)
            QDrag::cancel();
        if (popup)
            closeMenu(popup);
        else if (auto* dialog = qobject_cast<QDialog*>(modal))
            dialog->done(static_cast<int>(below(2)));
    }

    /// The help opens a browser; commands that are left on the undo stack keep their nodes, as they
    /// are meant to.
    static bool isFit(const QAction& action)
    {
        return !action.isSeparator() && !action.menu() && action.text() != "&Contents"
               && !action.text().contains("gnored");
    }

    void closeMenu(QWidget* popup)
    {
        const QPointer<QWidget> open = popup;
        const QList<QAction*> actions = popup->actions();
        QAction* chosen = actions.isEmpty() ? nullptr : any(actions);
        if (chosen && isFit(*chosen) && below(2))
            choose(chosen);
        if (open)
            open->close();
    }

    /// As the window system sends it.
    void press(QWidget* widget, const QPoint& at, Qt::MouseButton button,
               Qt::KeyboardModifiers modifiers, bool release = true)
    {
        const QPointer<QWindow> to = widget->window()->windowHandle();
        if (!to)
            return;
        const QPoint place = widget->mapTo(widget->window(), at);
        m_inRightPress = button == Qt::RightButton;
        QTest::mousePress(to, button, modifiers, place);
        m_inRightPress = false;
        if (to && release)
            QTest::mouseRelease(to, button, modifiers, place);
    }

    void doSomething(unsigned what)
    {
        QWidget* frame = window();
        if (!frame || !frame->isVisible()) {
            if (what == 0)
                start();
            return;
        }
        const auto trees = frame->findChildren<QTreeWidget*>();
        QTreeWidget* tree = any(trees);
        const QPoint somewhere(static_cast<int>(below(200)), static_cast<int>(below(120)));
        switch (what) {
        case 0:
            return press(tree->viewport(), somewhere, Qt::LeftButton,
                         below(4) ? Qt::NoModifier : Qt::ShiftModifier);
        case 1: {
            const QPointer<QWidget> alive = frame;
            tree->setFocus();
            static const Qt::Key kKeys[] = {Qt::Key_Down,  Qt::Key_Up,   Qt::Key_Asterisk,
                                            Qt::Key_Right, Qt::Key_Left, Qt::Key_Space};
            if (QWindow* to = alive ? alive->windowHandle() : nullptr)
                QTest::keyPress(to, kKeys[below(std::size(kKeys))]);
            return;
        }
        case 2: {
            QContextMenuEvent event(QContextMenuEvent::Mouse, somewhere,
                                    tree->viewport()->mapToGlobal(somewhere));
            QCoreApplication::sendEvent(tree->viewport(), &event);
            return;
        }
        case 3:
            return press(tree->header()->viewport(), somewhere, Qt::RightButton, {});
        case 4:
            return trigger(frame);
        case 5:
            return drag(tree, somewhere);
        case 6:
            m_scene->insertChild(support::hostScene().get(), 0);
            return;
        case 7:
            if (QTreeWidgetItem* item = tree->topLevelItem(0))
                tree->setCurrentItem(item);
            return;
        case kDrop:
            return dropFile(frame);
        default:
            if (MrbServices* services = MrbServices::getInstance())
                services->setSelectedNode(below(2) ? m_scene.get() : nullptr);
        }
    }

    void trigger(QWidget* frame)
    {
        const auto actions = frame->findChildren<QAction*>();
        QAction* action = any(actions);
        if (isFit(*action))
            choose(action);
    }

    /// By an event, as a key or a click does it: Qt goes on with the action's signal.
    static void choose(QAction* action)
    {
        QMetaObject::invokeMethod(action, &QAction::trigger, Qt::QueuedConnection);
        QCoreApplication::processEvents();
    }

    /// A standalone tool reads it, and shows how far it has come.
    void dropFile(QWidget* frame)
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(m_file)});
        // Qt gives a drop to the widget that was entered.
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, {});
        const QPointer<QWidget> alive = frame;
        QCoreApplication::sendEvent(frame, &enter);
        if (!alive)
            return;
        QDropEvent event(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        LeapingClock::setLeaping(true);
        QCoreApplication::sendEvent(frame, &event);
        LeapingClock::setLeaping(false);
    }

    void drag(QTreeWidget* tree, const QPoint& from)
    {
        QWindow* to = tree->window()->windowHandle();
        if (!to)
            return;
        const QPointer<QWindow> alive = to;
        const QPoint place = tree->viewport()->mapTo(tree->window(), from);
        m_dragging = true;
        press(tree->viewport(), from, Qt::LeftButton, {}, false);
        if (alive)
            QTest::mouseMove(alive, place + QPoint(30, 30));
        m_dragging = false;
        if (alive)
            QTest::mouseRelease(alive, Qt::LeftButton, {}, place);
    }

    std::mt19937 m_random;
    QString m_file;
    QPointer<QWidget> m_parent;
    SoRef<SoSeparator> m_scene = support::hostScene();
    SoRef<SoGuiExaminerViewer> m_area;
    SoNodeSensor m_sensor{[](void* data, SoSensor*) { static_cast<Round*>(data)->explode(); },
                          this};
    unsigned m_act;
    bool m_inLoop = false;
    bool m_inReading = false;
    bool m_inSignal = false;
    bool m_dragging = false;
    bool m_inRightPress = false;
    bool m_acted = false;
    bool m_exploded = false;
};

class StormTest : public LaunchTest {
protected:
    /// All widgets but those that Qt makes of the desktop when somebody asks for it.
    static std::vector<std::string> widgets()
    {
        std::vector<std::string> names;
        for (const QWidget* widget : QApplication::allWidgets())
            if (widget->windowType() != Qt::Desktop)
                names.push_back(widget->metaObject()->className()
                                + (" " + widget->objectName()).toStdString());
        std::sort(names.begin(), names.end());
        return names;
    }

    const support::TestExtension extension{folder};
};

TEST_F(StormTest, NothingOfTheToolIsLeftAndTheHostGoesOn)
{
    const LeapingClock clock;
    const std::vector<std::string> before = widgets();
    int acted = 0;
    int actedWhileReading = 0;
    const unsigned first = firstSeed();
    std::printf("seeds %u to %u\n", first, first + static_cast<unsigned>(rounds()) - 1);
    for (int i = 0; i < rounds() && !HasFailure(); ++i) {
        const unsigned seed = first + static_cast<unsigned>(i);
        SCOPED_TRACE("MIRABO_STORM_SEED=" + std::to_string(seed));
        std::fprintf(stderr, "[seed %u]\n", seed);
        auto errors = support::expectErrors(); // starts that are refused, and the like
        errors.mayStayEmpty();
        qApp->setProperty("log", QStringList());
        Round round(seed, writeFile("scene.ky", "#Kalmyr V1.0 ascii\nCube {}\n").c_str());
        round.run();
        EXPECT_FALSE(SoMirabo::isRunning());
        EXPECT_EQ(Round::window(), nullptr);
        round.endHost();
        EXPECT_EQ(round.scene()->getRefCount(), 1);
        EXPECT_EQ(round.scene()->getAuditors().getLength(), 0);
        acted += round.hasActed() ? 1 : 0;
        actedWhileReading += round.hasActedWhileReading() ? 1 : 0;
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(widgets(), before);
    }
    EXPECT_GE(acted * 2, rounds() == 1 ? 0 : rounds()) << "most rounds reach what they are about";
    EXPECT_TRUE(actedWhileReading > 0 || rounds() == 1);
    RecordProperty("acted while reading", actedWhileReading);
}

} // namespace

#include "StormTest.moc"
