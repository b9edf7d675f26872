#include "mirabo/extender/MrbFieldEdit.h"

#include "mirabo/extender/private/CommandStackAccess.h"
#include "mirabo/extender/private/ExtensionServices.h"
#include "mirabo/extender/private/FieldCommand.h"
#include "mirabo/extender/private/Frame.h"
#include "mirabo/extender/private/GraphFollower.h"
#include "mirabo/extender/private/GraphReading.h"
#include "mirabo/extender/private/Later.h"

#include <kalmyr/base/SbTime.h>
#include <kalmyr/core/SoField.h>
#include <kalmyr/core/SoFieldContainer.h>
#include <kalmyr/core/SoNode.h>

#include <QPointer>

#include <algorithm>
#include <atomic>
#include <utility>
#include <vector>

using mirabo::FieldCommand;
using mirabo::FieldStep;
using mirabo::GraphFollower;
using mirabo::GraphReading;

namespace {

/// Values that move faster than the eye are not told for every frame of the host.
constexpr double kPauseMs = 16;
constexpr char kBusy[] = "Another thread is editing the scene; try again.";

QString toText(const SbName& name)
{
    return QString::fromUtf8(name.getString());
}

QString toText(const SbString& text)
{
    return QString::fromUtf8(text.getString(), static_cast<int>(text.getLength()));
}

QString nameOf(const SoFieldContainer& container)
{
    const SbName name = container.getName();
    return toText(name.isEmpty() ? container.getTypeId().getName() : name);
}

/// "radius of Sphere".
QString placeOf(const SoField& field)
{
    const SoFieldContainer* container = field.getContainer();
    if (!container)
        return toText(field.getTypeId().getName());
    return QString("%1 of %2").arg(toText(container->getFieldName(&field)), nameOf(*container));
}

bool isReadOnly(const SoField& field)
{
    const SoField::FieldType type = field.getFieldType();
    return field.isConnected() || type == SoField::EVENT_OUT
           || (field.getContainer() && field.getContainer()->computes(&field));
}

/// The same field of a new object of the container's type; null when its class has no default.
const SoField* pristineOf(const SoField& field, SoRef<SoFieldContainer>& keeper)
{
    const SoFieldContainer* container = field.getContainer();
    keeper = container ? container->createTwin() : nullptr;
    const SoField* pristine = keeper ? keeper->getField(container->getFieldName(&field)) : nullptr;
    return pristine && pristine->getTypeId() == field.getTypeId() ? pristine : nullptr;
}

mirabo::CommandStackAccess* commandStack()
{
    return dynamic_cast<mirabo::CommandStackAccess*>(mirabo::ExtensionServices::tool());
}

/// Calls with the selected field, if there is one that lives and no other thread edits.
void lookAtSelected(const std::function<void(SoField&)>& look)
{
    const mirabo::CommandStackAccess* access = commandStack();
    const GraphReading graph; // first: what is held goes under it
    if (!access || !graph)
        return;
    SoField* field = nullptr;
    const SoRef<const SoRefCounter> held = access->holdSelectedField(field);
    if (field)
        look(*field);
}

} // namespace

class MrbFieldEdit::Private {
public:
    using MakeStep = std::function<std::unique_ptr<FieldStep>(SoField&)>;

    explicit Private(MrbFieldEdit* owner) : m_owner(owner) {}

    bool add(SoField* field);
    void remove(int index) { m_fields.erase(m_fields.begin() + index); }
    int count() const { return static_cast<int>(m_fields.size()); }
    const SoField* field(int index) const
    {
        return index >= 0 && index < count() ? at(index).field.load() : nullptr;
    }
    bool hasDefault(int index) const { return at(index).hasDefault; }
    bool has(const SoField* field) const
    {
        return std::any_of(m_fields.begin(), m_fields.end(),
                           [field](const auto& followed) { return followed->field == field; });
    }
    bool look(int index, const std::function<void(SoField&)>& reader) const;
    /// Makes a step of each field that can be changed, as one command.
    bool run(const char* verb, bool readOnlyToo, const MakeStep& makeStep);

    SoType type;
    QString problem;
    bool inGesture = false;
    const MrbCommand* command = nullptr; ///< of the gesture; for comparison only

private:
    struct Followed {
        explicit Followed(QObject* context) : follower(context) {}
        std::atomic<SoField*> field = nullptr; // Not owned; forgotten when it dies.
        bool hasDefault = false;
        GraphFollower follower; // last: it goes before what it writes
    };

    const Followed& at(int index) const { return *m_fields[static_cast<std::size_t>(index)]; }
    FieldCommand::Entries makeEntries(bool readOnlyToo, const MakeStep& makeStep);
    QString commandName(const char* verb, const FieldCommand::Entries& entries) const;
    bool push(const QString& name, FieldCommand::Entries entries);
    void noteChange();
    void tellChange();

    MrbFieldEdit* m_owner;
    std::vector<std::unique_ptr<Followed>> m_fields;
    std::atomic<bool> m_changeNoted{false};
    double m_lastTold = 0; ///< in seconds
};

bool MrbFieldEdit::Private::add(SoField* field)
{
    auto followed = std::make_unique<Followed>(m_owner);
    followed->field = field;
    const bool isFollowed = followed->follower.follow(
        field, {.touched = [this] { noteChange(); },
                .dying = [entry = followed.get()] { entry->field = nullptr; },
                .died =
                    [owner = QPointer(m_owner)] {
                        if (owner)
                            Q_EMIT owner->fieldsChanged();
                        if (owner)
                            Q_EMIT owner->changed();
                    }});
    if (!isFollowed)
        return false;
    SoRef<SoFieldContainer> keeper;
    followed->hasDefault = pristineOf(*field, keeper); // once: it makes a whole container
    m_fields.push_back(std::move(followed));
    return true;
}

bool MrbFieldEdit::Private::look(int index, const std::function<void(SoField&)>& reader) const
{
    if (index < 0 || index >= count())
        return false;
    const GraphReading graph; // first: what is held goes under it
    if (!graph)
        return false;
    const SoRef<const SoRefCounter> held = at(index).follower.hold();
    SoField* field = at(index).field;
    if (!field || (!held && field->getContainer()))
        return false;
    reader(*field);
    return true;
}

FieldCommand::Entries MrbFieldEdit::Private::makeEntries(bool readOnlyToo, const MakeStep& makeStep)
{
    FieldCommand::Entries entries;
    for (int i = 0; i < count(); ++i)
        look(i, [&](SoField& field) {
            if (!readOnlyToo && isReadOnly(field))
                return;
            std::unique_ptr<FieldStep> step = makeStep(field);
            if (!step)
                return;
            auto observed = std::make_unique<mirabo::Observed<SoField>>();
            observed->reset(&field);
            entries.push_back({std::move(observed), std::move(step)});
        });
    return entries;
}

QString MrbFieldEdit::Private::commandName(const char* verb,
                                           const FieldCommand::Entries& entries) const
{
    const SoField* first = entries.front().field->get();
    QString name = QString(verb) + ' ' + (first ? placeOf(*first) : QString());
    if (entries.size() > 1)
        name += QString(" and %1 more").arg(entries.size() - 1);
    return name;
}

bool MrbFieldEdit::Private::run(const char* verb, bool readOnlyToo, const MakeStep& makeStep)
{
    problem.clear();
    const mirabo::Frame frame; // a sensor of the host may end the tool meanwhile
    FieldCommand::Entries entries;
    QString name;
    {
        const GraphReading graph;
        if (!graph) {
            problem = kBusy;
            return false;
        }
        entries = makeEntries(readOnlyToo, makeStep);
        if (entries.empty())
            return false;
        name = commandName(verb, entries);
    }
    return push(name, std::move(entries));
}

bool MrbFieldEdit::Private::push(const QString& name, FieldCommand::Entries entries)
{
    mirabo::CommandStackAccess* stack = commandStack();
    if (!stack)
        return false;
    if (inGesture && command && stack->isLastCommand(command)) {
        // It is on the stack, so it lives, and this is the only place that makes such commands.
        auto* last = static_cast<FieldCommand*>(const_cast<MrbCommand*>(command));
        return stack->extendCommand(command, [&] { return last->extend(std::move(entries)); });
    }
    auto made = std::make_unique<FieldCommand>(name, std::move(entries));
    const QPointer<MrbFieldEdit> owner(m_owner);
    if (inGesture)
        command = made.get(); // before a sensor of the host may end all of this
    const bool isDone = stack->pushOwnCommand(std::move(made));
    if (owner && !isDone)
        problem = kBusy;
    return isDone;
}

void MrbFieldEdit::Private::noteChange()
{
    if (!m_changeNoted.exchange(true))
        QMetaObject::invokeMethod(
            m_owner,
            [this] {
                const double since = 1000 * (SbTime::monotonic().getValue() - m_lastTold);
                const double delay = std::clamp(kPauseMs - since, 0.0, kPauseMs);
                mirabo::callLater(m_owner, static_cast<int>(delay), [this] { tellChange(); });
            },
            Qt::QueuedConnection);
}

void MrbFieldEdit::Private::tellChange()
{
    m_changeNoted = false;
    m_lastTold = SbTime::monotonic().getValue();
    Q_EMIT m_owner->changed();
}

MrbFieldEdit::MrbFieldEdit(SoField* field, QObject* parent)
    : QObject(parent), m(std::make_unique<Private>(this))
{
    if (!field)
        return;
    m->type = field->getTypeId();
    m->add(field);
}

MrbFieldEdit::~MrbFieldEdit() = default;

MrbFieldEdit* MrbFieldEdit::createForSelectedField(QObject* parent)
{
    std::unique_ptr<MrbFieldEdit> edit;
    lookAtSelected([&](SoField& field) { edit = std::make_unique<MrbFieldEdit>(&field, parent); });
    return edit && edit->getFieldCount() > 0 ? edit.release() : nullptr;
}

bool MrbFieldEdit::addSelectedField()
{
    bool isAdded = false;
    lookAtSelected([&](SoField& field) { isAdded = addField(&field); });
    return isAdded;
}

QString MrbFieldEdit::selectedFieldToAdd() const
{
    QString name;
    lookAtSelected([&](const SoField& field) {
        if (field.getTypeId() == m->type && !m->has(&field))
            name = placeOf(field);
    });
    return name;
}

bool MrbFieldEdit::addField(SoField* field)
{
    if (!field || m->has(field) || field->getTypeId() != m->type || !m->add(field))
        return false;
    endGesture();
    Q_EMIT fieldsChanged();
    return true;
}

void MrbFieldEdit::removeField(int index)
{
    if (index <= 0 || index >= m->count())
        return;
    endGesture();
    m->remove(index);
    Q_EMIT fieldsChanged();
}

int MrbFieldEdit::getFieldCount() const
{
    return m->count();
}

const SoField* MrbFieldEdit::getField(int index) const
{
    return m->field(index);
}

SoType MrbFieldEdit::getFieldType() const
{
    return m->type;
}

MrbFieldState MrbFieldEdit::getState(int index) const
{
    MrbFieldState state;
    state.typeName = toText(m->type.getName());
    state.isReadOnly = true;
    m->look(index, [&](const SoField& field) {
        state.isAlive = true;
        if (const SoFieldContainer* container = field.getContainer()) {
            state.fieldName = toText(container->getFieldName(&field));
            state.containerType = toText(container->getTypeId().getName());
            state.containerName = toText(container->getName());
        }
        state.hasDefault = m->hasDefault(index);
        state.isDefault = field.isDefault();
        state.isIgnored = field.isIgnored();
        state.isConnected = field.isConnected();
        state.isReadOnly = isReadOnly(field);
        if (const SoField* master = field.getConnectedField())
            state.source = placeOf(*master);
    });
    return state;
}

bool MrbFieldEdit::read(const std::function<void(const SoField&)>& reader, int index) const
{
    return m->look(index, [&reader](const SoField& field) { reader(field); });
}

bool MrbFieldEdit::isEditable() const
{
    bool isPossible = false;
    for (int i = 0; i < m->count(); ++i)
        m->look(i, [&](const SoField& field) { isPossible |= !isReadOnly(field); });
    return isPossible;
}

bool MrbFieldEdit::change(const Change& change)
{
    return m->run("Set", false, [&change](SoField& field) -> std::unique_ptr<FieldStep> {
        std::unique_ptr<SoField> value = mirabo::copyOf(field);
        if (!value || !change(*value))
            return nullptr;
        return mirabo::makeValueStep(field, std::move(value));
    });
}

bool MrbFieldEdit::setText(const QString& text, QString* problem)
{
    SbString fault;
    const QByteArray bytes = text.toUtf8();
    const SbString source(
        std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    const bool isChanged = change([&](SoField& value) { return value.set(source, fault); });
    if (problem)
        *problem = toText(fault);
    return isChanged;
}

bool MrbFieldEdit::replaceValues(int start, int removed, const SoMField& values)
{
    return m->run("Set", false, [&](SoField& field) {
        return mirabo::makeRangeStep(static_cast<SoMField&>(field), start, removed, values);
    });
}

bool MrbFieldEdit::resetToDefault()
{
    endGesture();
    return m->run("Reset", false, [](SoField& field) -> std::unique_ptr<FieldStep> {
        SoRef<SoFieldContainer> keeper;
        const SoField* pristine = pristineOf(field, keeper);
        return pristine ? mirabo::makeValueStep(field, mirabo::copyOf(*pristine), true) : nullptr;
    });
}

bool MrbFieldEdit::setIgnored(bool on)
{
    endGesture();
    return m->run(on ? "Ignore" : "Enable", true,
                  [on](SoField& field) { return mirabo::makeIgnoredStep(field, on); });
}

bool MrbFieldEdit::disconnectFields()
{
    endGesture();
    return m->run("Disconnect", true,
                  [](SoField& field) { return mirabo::makeConnectionStep(field, nullptr); });
}

bool MrbFieldEdit::connectFields(SoField* master)
{
    endGesture();
    return master && m->run("Connect", true, [master](SoField& field) {
        return mirabo::makeConnectionStep(field, master);
    });
}

std::unique_ptr<SoField> MrbFieldEdit::copyValue() const
{
    std::unique_ptr<SoField> copy;
    m->look(0, [&copy](const SoField& field) { copy = mirabo::copyOf(field); });
    return copy;
}

std::unique_ptr<SoField> MrbFieldEdit::makeValue() const
{
    std::unique_ptr<SoField> value;
    m->look(0, [&value](const SoField& field) { value = field.createTwin(); });
    return value;
}

void MrbFieldEdit::beginGesture()
{
    endGesture();
    m->inGesture = true;
}

void MrbFieldEdit::endGesture()
{
    m->inGesture = false;
    m->command = nullptr;
}

void MrbFieldEdit::cancelGesture()
{
    mirabo::CommandStackAccess* stack = commandStack();
    const bool takesBack = m->inGesture && m->command && stack && stack->isLastCommand(m->command);
    endGesture();
    if (takesBack)
        mirabo::ExtensionServices::tool()->undo();
}

bool MrbFieldEdit::isInGesture() const
{
    return m->inGesture;
}

const QString& MrbFieldEdit::getProblem() const
{
    return m->problem;
}
