#include <mirabo/extender/MrbCommand.h>
#include <mirabo/extender/MrbExtension.h>
#include <mirabo/extender/MrbPlugin.h>
#include <mirabo/extender/MrbPreferencePage.h>
#include <mirabo/extender/MrbServices.h>
#include <mirabo/extender/MrbShell.h>

#include <kalmyr/base/SoRef.h>
#include <kalmyr/nodes/SoGroup.h>
#include <kalmyr/sensors/SoNodeSensor.h>
#include <kalmyr/shapes/SoCube.h>

#include <QAction>
#include <QApplication>
#include <QDockWidget>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QToolBar>

#include <functional>
#include <stdexcept>

Q_DECLARE_METATYPE(std::function<void()>)

namespace {

/// What the test has done from within the extension's code.
std::function<void()> taskOfTest()
{
    return qApp->property("task").value<std::function<void()>>();
}

/// Appends to the log that the test reads, and throws where the test wants it: by a property, or
/// by the environment in a process of its own.
void at(const QString& where)
{
    qApp->setProperty("log", qApp->property("log").toStringList() << where);
    if (qApp->property("failAt").toString() == where
        || qEnvironmentVariable("TEST_PLUGIN_FAIL_AT") == where)
        throw std::runtime_error("told to fail at " + where.toStdString());
    if (qApp->property("taskAt").toString() == where)
        if (const auto task = taskOfTest())
            task();
}

class LoggingCommand final : public MrbCommand {
public:
    ~LoggingCommand() override
    {
        qApp->setProperty("log", qApp->property("log").toStringList() << "~command");
    }
    bool execute() override
    {
        at("execute");
        return true;
    }
    void undo() override { at("undo"); }
    void redo() override { at("redo"); }
};

class Page final : public MrbPreferencePage {
public:
    using MrbPreferencePage::MrbPreferencePage;
    void load() override { at("load"); }
    void save() override { at("save"); }
};

} // namespace

/// Only listens.
class Listener : public MrbExtension {
    Q_OBJECT

public:
    explicit Listener(const QString& name) : m_name(name) {}
    ~Listener() override
    {
        qApp->setProperty("log", qApp->property("log").toStringList() << "~" + m_name);
    }

    MrbExtensionInfo getInfo() const override { return {m_name, m_name + " view", "Tests", "1"}; }
    bool activate() override
    {
        at("activate " + m_name);
        connect(services(), &MrbServices::selectedNodeChanged, this,
                [this](SoFieldContainer*) { at("node " + m_name); });
        return true;
    }
    void deactivate() override { at("deactivate " + m_name); }
    void addControlled(MrbExtension* extension) override
    {
        at("add " + extension->getInfo().name + " to " + m_name);
    }
    void removeControlled(MrbExtension* extension) override
    {
        at("remove " + extension->getInfo().name + " from " + m_name);
    }

private:
    QString m_name;
};

/// Uses every operation of the interface.
class Everything final : public MrbExtension {
    Q_OBJECT

public:
    ~Everything() override
    {
        qApp->setProperty("log", qApp->property("log").toStringList() << "~Everything");
    }

    MrbExtensionInfo getInfo() const override
    {
        at("getInfo");
        return {"Everything", "Everything view", "Tests", "1"};
    }

    bool activate() override
    {
        at("activate");
        if (qApp->property("failAt").toString() == "refuse") {
            fail("nothing to show");
            return false;
        }
        m_sensor.setPriority(0);
        m_sensor.attach(m_watched.get());
        placeWidgets();
        placeEntries();
        shell()->addView(this, Qt::RightDockWidgetArea);
        connect(services(), &MrbServices::selectedNodeChanged, this, [](SoFieldContainer*) {
            at("selectedNodeChanged");
            if (const auto task = taskOfTest())
                task();
        });
        connect(services(), &MrbServices::selectedFieldChanged, this,
                [](SoField*) { at("selectedFieldChanged"); });
        connect(services(), &MrbServices::sceneGraphChanged, this,
                [](SoNode*) { at("sceneGraphChanged"); });
        return true;
    }

    void deactivate() override { at("deactivate"); }

    QWidget* createView(QWidget* parent) override
    {
        at("createView");
        auto* label = new QLabel("content", parent);
        label->setObjectName("everything:content");
        return label;
    }

    MrbPreferencePage* createPreferencePage(QWidget* parent) override
    {
        at("createPreferencePage");
        return new Page(parent);
    }

    Q_INVOKABLE bool push() { return services()->pushCommand(new LoggingCommand); }
    Q_INVOKABLE void throwLater()
    {
        QTimer::singleShot(0, this, guard([] { at("timer"); }));
    }
    Q_INVOKABLE void changeWatched() { m_watched->width = 3; }
    Q_INVOKABLE void removeAll()
    {
        shell()->removeDockWidget(m_dock);
        shell()->removeMenu(m_menu);
        shell()->removeContextMenu(m_contextMenu);
        shell()->removeEntry(m_entry);
        shell()->removeToolBar(m_toolBar);
        shell()->removeStatusWidget(m_status);
        shell()->removeView(this);
    }

private:
    template <typename Widget>
    Widget* named(Widget* widget, const char* name)
    {
        widget->setObjectName(QString("everything:") + name);
        return widget;
    }

    QMenu* makeMenu(const char* name)
    {
        auto* menu = named(new QMenu(name), name);
        QAction* action = menu->addAction("Act");
        connect(action, &QAction::triggered, this, [name] { at(QString(name) + " entry"); });
        return menu;
    }

    void placeWidgets()
    {
        m_dock = named(new QDockWidget("Everything dock"), "dock");
        auto* button = named(new QPushButton("Press"), "button");
        connect(button, &QPushButton::clicked, this, [] { at("button"); });
        m_dock->setWidget(button);
        shell()->addDockWidget(m_dock, Qt::LeftDockWidgetArea);
        m_toolBar = named(new QToolBar("Everything Tool Bar"), "toolBar");
        connect(m_toolBar->addAction("Tool"), &QAction::triggered, this, [] { at("tool"); });
        shell()->addToolBar(m_toolBar, Qt::TopToolBarArea);
        m_status = named(new QLabel("state"), "status");
        shell()->addStatusWidget(m_status, 1, 0);
    }

    void placeEntries()
    {
        m_menu = makeMenu("menu");
        shell()->addMenu(m_menu);
        m_contextMenu = makeMenu("contextMenu");
        shell()->addContextMenu(SoGroup::getClassTypeId(), true, m_contextMenu);
        shell()->addContextMenu(SoCube::getClassTypeId(), false, m_contextMenu);
        m_entry = named(new QAction("Everything entry", this), "entry");
        m_entry->setCheckable(true);
        connect(m_entry, &QAction::triggered, this, [] { at("entry"); });
        shell()->addEntry(m_entry, "Edit", 2);
        auto* early = named(new QAction("Early entry", this), "early");
        shell()->addEntry(early, "Edit", 1);
        auto* tool = named(new QAction("Everything tool", this), "toolEntry");
        shell()->addEntry(tool, "Edit Tool Bar", 0);
    }

    SoRef<SoCube> m_watched{new SoCube};
    MrbSensorGuard m_guard{this, [](SoSensor*) { at("sensor"); }};
    SoNodeSensor m_sensor{&MrbSensorGuard::call, &m_guard};
    QDockWidget* m_dock = nullptr; // The shell's, as the others.
    QToolBar* m_toolBar = nullptr;
    QLabel* m_status = nullptr;
    QMenu* m_menu = nullptr;
    QMenu* m_contextMenu = nullptr;
    QAction* m_entry = nullptr;
};

class EverythingPlugin final : public QObject, public MrbPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID MrbPlugin_iid)
    Q_INTERFACES(MrbPlugin)

public:
    QStringList getExtensionNames() const override
    {
        return {"Everything", "Listener", "Parent", "Child"};
    }
    MrbExtension* createExtension(const QString& name) override
    {
        at("create " + name);
        if (name == "Everything")
            return new Everything;
        return getExtensionNames().contains(name) ? new Listener(name) : nullptr;
    }
};

#include "Plugin.moc"
