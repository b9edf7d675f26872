#include <kalmyr/engines/SoTypedEngine.h>

#include <kalmyr/base/SoDebugError.h>
#include <kalmyr/core/SoFieldData.h>
#include <kalmyr/fields/SoMFEnum.h>
#include <kalmyr/fields/SoMFNode.h>
#include <kalmyr/fields/SoSFNode.h>

#include <algorithm>
#include <string>

namespace {

SoType s_type;

/// The functions and types that belong to a multiple-value type.
struct Operations {
    SoType multiple;
    SoType single;
    void (*select)(const SoMField& from, int index, SoField& to);
    void (*append)(const SoMField& from, SoMField& to);
};

template <class Single, class Multiple>
Operations operationsOf()
{
    return {Multiple::getClassTypeId(), Single::getClassTypeId(),
            [](const SoMField& from, int index, SoField& to) {
                static_cast<Single&>(to).setValue(static_cast<const Multiple&>(from)[index]);
            },
            [](const SoMField& from, SoMField& to) {
                auto& target = static_cast<Multiple&>(to);
                if constexpr (std::is_same_v<Multiple, SoMFNode>)
                    target.setValues(target.getNum(),
                                     static_cast<const Multiple&>(from).getValues());
                else
                    target.setValues(target.getNum(), static_cast<const Multiple&>(from).values());
            }};
}

#define KALMYR_OPERATIONS(Suffix) operationsOf<SoSF##Suffix, SoMF##Suffix>()

const std::vector<Operations>& allOperations()
{
    static const std::vector<Operations> all{
        KALMYR_OPERATIONS(Bool),     KALMYR_OPERATIONS(Int32),   KALMYR_OPERATIONS(UInt32),
        KALMYR_OPERATIONS(Short),    KALMYR_OPERATIONS(UShort),  KALMYR_OPERATIONS(Float),
        KALMYR_OPERATIONS(Double),   KALMYR_OPERATIONS(Time),    KALMYR_OPERATIONS(String),
        KALMYR_OPERATIONS(Name),     KALMYR_OPERATIONS(Vec2f),   KALMYR_OPERATIONS(Vec3f),
        KALMYR_OPERATIONS(Vec4f),    KALMYR_OPERATIONS(Vec2d),   KALMYR_OPERATIONS(Vec3d),
        KALMYR_OPERATIONS(Vec4d),    KALMYR_OPERATIONS(Vec2s),   KALMYR_OPERATIONS(Vec3s),
        KALMYR_OPERATIONS(Vec4s),    KALMYR_OPERATIONS(Vec2i32), KALMYR_OPERATIONS(Vec3i32),
        KALMYR_OPERATIONS(Vec4i32),  KALMYR_OPERATIONS(Color),   KALMYR_OPERATIONS(ColorRGBA),
        KALMYR_OPERATIONS(Rotation), KALMYR_OPERATIONS(Matrix),  KALMYR_OPERATIONS(Plane),
        KALMYR_OPERATIONS(Enum),     KALMYR_OPERATIONS(Node),
    };
    return all;
}

#undef KALMYR_OPERATIONS

const Operations* find(SoType multiple)
{
    const auto& all = allOperations();
    const auto at = std::find_if(
        all.begin(), all.end(), [multiple](const Operations& o) { return o.multiple == multiple; });
    return at == all.end() ? nullptr : &*at;
}

} // namespace

SoType SoTypedEngine::getClassTypeId()
{
    return s_type;
}

void SoTypedEngine::initClass()
{
    s_type = SoType::createType(SoEngine::getClassTypeId(), SbName("TypedEngine"));
}

SoTypedEngine::SoTypedEngine() : m_data(std::make_unique<SoFieldData>()) {}
SoTypedEngine::~SoTypedEngine() = default;

bool SoTypedEngine::isSupported(SoType multiple)
{
    return find(multiple);
}

SoType SoTypedEngine::getSingleType() const
{
    return find(m_valueType)->single;
}

void SoTypedEngine::selectValue(const SoMField& from, int index, SoField& to)
{
    find(from.getTypeId())->select(from, index, to);
}

void SoTypedEngine::appendValues(const SoMField& from, SoMField& to)
{
    find(from.getTypeId())->append(from, to);
}

void SoTypedEngine::declare(const char* name, SoField* field)
{
    field->setContainer(this);
    m_data->addField(this, SbName(name), field);
}

SoField* SoTypedEngine::declareNew(const char* name, SoType fieldType)
{
    m_owned.emplace_back(static_cast<SoField*>(fieldType.createInstance()));
    declare(name, m_owned.back().get());
    return m_owned.back().get();
}

void SoTypedEngine::setValueType(SoType multiple)
{
    if (!isSupported(multiple)) {
        SoDebugError::post("SoTypedEngine", "%s is no type of multiple values",
                           multiple.getName().getString());
        multiple = SoMFFloat::getClassTypeId();
    }
    m_ready = false;
    m_valueType = multiple;
    m_owned.clear();
    m_data = std::make_unique<SoFieldData>();
    declare("type", &type);
    const bool isDefault = multiple == SoMFFloat::getClassTypeId();
    type.initValue(multiple.getName());
    type.setDefault(isDefault);
    declareFields();
    m_ready = true;
}

bool SoTypedEngine::isConnectedAnywhere() const
{
    const auto fields = getFields();
    return std::any_of(fields.begin(), fields.end(), [](const SoField* field) {
        return field->isConnected() || field->getAuditors().getLength() > 0;
    });
}

void SoTypedEngine::applyType()
{
    const SoType wanted = SoType::fromName(type.getValue());
    if (wanted == m_valueType)
        return;
    if (!isSupported(wanted) || isConnectedAnywhere()) {
        SoDebugError::post("SoTypedEngine", "the type of %s cannot become %s: %s",
                           getTypeId().getName().getString(), type.getValue().getString(),
                           isSupported(wanted) ? "it has connections or sensors"
                                               : "that is no type of multiple values");
        m_ready = false;
        type.setValue(m_valueType.getName());
        m_ready = true;
        return;
    }
    setValueType(wanted);
}

void SoTypedEngine::notify(SoNotification& notification)
{
    if (notification.field == &type && notification.container == this) {
        if (m_ready)
            applyType();
        SoFieldContainer::notify(notification);
        return;
    }
    SoEngine::notify(notification);
}

SoFieldContainer* SoTypedEngine::createTwin() const
{
    auto* twin = static_cast<SoTypedEngine*>(SoEngine::createTwin());
    if (twin)
        twin->setValueType(m_valueType);
    return twin;
}

void SoTypedEngine::copyFieldValues(const SoFieldContainer* from, bool copyConnections)
{
    if (from->getTypeId() == getTypeId() && from != this)
        type.setValue(static_cast<const SoTypedEngine*>(from)->m_valueType.getName());
    SoEngine::copyFieldValues(from, copyConnections);
}
