#include "ListCells.h"

#include "FieldNumbers.h"
#include "NumberInput.h"
#include "NumberText.h"

#include <kalmyr/core/SoFieldIO.h>
#include <kalmyr/core/SoNode.h>
#include <kalmyr/fields/SoMFEnum.h>
#include <kalmyr/fields/SoMNodeField.h>
#include <kalmyr/fields/SoSFEngine.h>
#include <kalmyr/fields/SoSFPath.h>
#include <kalmyr/fields/SoValueFields.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace {

QString toText(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

SbString toString(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    return SbString(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

std::string sceneText(const SoMField& field, int row)
{
    std::string text;
    SoFieldWriter writer(text);
    field.write1Value(row, writer);
    return text;
}

/// Orders rows by a key of each, both ways without touching those with equal keys.
template <class Key, class Less>
void sortBy(const std::vector<Key>& keys, bool isDescending, const Less& less,
            std::vector<int>& rows)
{
    std::vector<int> places(rows.size());
    for (std::size_t i = 0; i < places.size(); ++i)
        places[i] = static_cast<int>(i);
    std::stable_sort(places.begin(), places.end(), [&](int a, int b) {
        const Key& first = keys[static_cast<std::size_t>(isDescending ? b : a)];
        const Key& second = keys[static_cast<std::size_t>(isDescending ? a : b)];
        return less(first, second);
    });
    const std::vector<int> old = rows;
    std::transform(places.begin(), places.end(), rows.begin(),
                   [&old](int place) { return old[static_cast<std::size_t>(place)]; });
}

class NumberCells final : public ListCells {
public:
    NumberCells(const FieldNumbers& numbers, bool isColor, bool isJoint)
        : ListCells(Input::Line, numbers.labels()),
          m_numbers(numbers),
          m_isColor(isColor),
          m_isJoint(isJoint)
    {
    }

    const FieldNumbers* numbers() const override { return &m_numbers; }
    bool isJoint() const override { return m_isJoint; }
    QString text(const SoMField& field, int row, int column) const override
    {
        return numberText(m_numbers.kind(), number(field, row, column));
    }
    bool hasColors() const override { return m_isColor; }
    QColor color(const SoMField& field, int row) const override
    {
        Numbers all{};
        all[3] = 1;
        m_numbers.get(field, row, all.data());
        for (double& part : all)
            part = std::isnan(part) ? 0 : std::clamp(part, 0.0, 1.0);
        return QColor::fromRgbF(all[0], all[1], all[2], all[3]);
    }
    bool setText(SoMField& values, int row, int column, const QString& text,
                 QString& problem) const override
    {
        double wanted = 0;
        if (!readNumber(m_numbers.kind(), text, number(values, row, column), wanted, problem))
            return false;
        if (m_numbers.set(values, row, column, wanted))
            return true;
        problem = "No such value: a direction has a length";
        return false;
    }
    void sort(const SoMField& values, int column, bool isDescending,
              std::vector<int>& rows) const override
    {
        const auto isNumber = [&](int row) { return !std::isnan(number(values, row, column)); };
        const auto end = std::stable_partition(rows.begin(), rows.end(), isNumber);
        std::vector<int> ordered(rows.begin(), end);
        std::vector<double> keys(ordered.size());
        std::transform(ordered.begin(), ordered.end(), keys.begin(),
                       [&](int row) { return number(values, row, column); });
        sortBy(keys, isDescending, std::less<>(), ordered);
        std::copy(ordered.begin(), ordered.end(), rows.begin());
    }

private:
    using Numbers = std::array<double, FieldNumbers::kMaxCount>;

    double number(const SoMField& field, int row, int column) const
    {
        Numbers all{};
        m_numbers.get(field, row, all.data());
        return all[static_cast<std::size_t>(column)];
    }

    const FieldNumbers& m_numbers;
    bool m_isColor;
    bool m_isJoint;
};

class BoolCells final : public ListCells {
public:
    BoolCells() : ListCells(Input::Check) {}

    QString text(const SoMField& field, int row, int) const override
    {
        return static_cast<const SoMFBool&>(field)[row] ? "TRUE" : "FALSE";
    }
    bool setText(SoMField& values, int row, int, const QString& text,
                 QString& problem) const override
    {
        const QString word = text.trimmed().toUpper();
        const bool isOn = word == "TRUE" || word == "1";
        if (!isOn && word != "FALSE" && word != "0") {
            problem = "Expected TRUE or FALSE";
            return false;
        }
        static_cast<SoMFBool&>(values).set1Value(row, isOn);
        return true;
    }
};

class EnumCells final : public ListCells {
public:
    explicit EnumCells(const SoMFEnum& field) : ListCells(Input::Choice), m_enums(field.getEnums())
    {
    }

    QStringList choices() const override
    {
        QStringList names;
        for (const SoEnumEntry& entry : m_enums)
            names << entry.name;
        return names;
    }
    QString text(const SoMField& field, int row, int) const override
    {
        const int value = static_cast<const SoMFEnum&>(field)[row];
        const char* name = kalmyr::findEnumName(m_enums, value);
        return name ? QString(name) : QString::number(value);
    }
    bool setText(SoMField& values, int row, int, const QString& text,
                 QString& problem) const override
    {
        int value = 0;
        bool isKnown = kalmyr::findEnumValue(m_enums, text.trimmed().toStdString(), value);
        if (!isKnown)
            value = text.trimmed().toInt(&isKnown);
        if (isKnown)
            static_cast<SoMFEnum&>(values).set1Value(row, value);
        else
            problem = m_enums.empty() ? "Expected a whole number"
                                      : "Expected one of the names, or a whole number";
        return isKnown;
    }

private:
    std::span<const SoEnumEntry> m_enums;
};

/// Strings and names: the text itself, without quotes.
template <class Field>
class TextCells final : public ListCells {
public:
    explicit TextCells(Input input) : ListCells(input) {}

    QString text(const SoMField& field, int row, int) const override
    {
        return toText(static_cast<const Field&>(field)[row]);
    }
    bool setText(SoMField& values, int row, int, const QString& text, QString&) const override
    {
        static_cast<Field&>(values).set1Value(row, typename Field::Value(toString(text)));
        return true;
    }
};

/// Values of any other type: as scene files have them.
class SceneTextCells final : public ListCells {
public:
    explicit SceneTextCells(Input input) : ListCells(input) {}

    QString text(const SoMField& field, int row, int) const override
    {
        return toText(sceneText(field, row));
    }
    bool setText(SoMField& values, int row, int, const QString& text,
                 QString& problem) const override
    {
        const std::unique_ptr<SoField> one = values.createTwin();
        SbString fault;
        if (!one || !one->set(toString(text), fault)) {
            problem = toText(fault);
            return false;
        }
        const auto& list = static_cast<const SoMField&>(*one);
        if (list.getNum() == 1)
            return values.replaceValues(row, 1, list, 0, 1);
        problem = "Expected one value";
        return false;
    }
};

/// Nodes, by type and name.
class NodeCells final : public ListCells {
public:
    NodeCells() : ListCells(Input::None) {}

    QString text(const SoMField& field, int row, int) const override
    {
        const SoNode* node = static_cast<const SoMNodeField&>(field)[row];
        if (!node)
            return "NULL";
        const QString type = toText(node->getTypeId().getName());
        const QString name = toText(node->getName());
        return name.isEmpty() ? type : type + "  " + name;
    }
    bool setText(SoMField&, int, int, const QString&, QString&) const override { return false; }
};

} // namespace

ListCells::ListCells(Input input, QStringList labels) : m_input(input), m_labels(std::move(labels))
{
}

ListCells::~ListCells() = default;

std::unique_ptr<const ListCells> ListCells::of(const SoMField& field)
{
    const auto is = [&field](auto... type) { return (field.isOfType(type) || ...); };
    if (const FieldNumbers* numbers = FieldNumbers::of(field.getTypeId()))
        return std::make_unique<NumberCells>(
            *numbers, is(SoMFColor::getClassTypeId(), SoMFColorRGBA::getClassTypeId()),
            is(SoMFRotation::getClassTypeId(), SoMFPlane::getClassTypeId()));
    if (is(SoMFBool::getClassTypeId()))
        return std::make_unique<BoolCells>();
    if (is(SoMFEnum::getClassTypeId()))
        return std::make_unique<EnumCells>(static_cast<const SoMFEnum&>(field));
    if (is(SoMFString::getClassTypeId()))
        return std::make_unique<TextCells<SoMFString>>(Input::Box);
    if (is(SoMFName::getClassTypeId()))
        return std::make_unique<TextCells<SoMFName>>(Input::Line);
    if (is(SoMNodeField::getClassTypeId()))
        return std::make_unique<NodeCells>();
    const bool isReference = is(SoMFPath::getClassTypeId(), SoMFEngine::getClassTypeId());
    return std::make_unique<SceneTextCells>(isReference ? Input::None : Input::Line);
}

void ListCells::sort(const SoMField& values, int column, bool isDescending,
                     std::vector<int>& rows) const
{
    std::vector<QString> keys(rows.size());
    std::transform(rows.begin(), rows.end(), keys.begin(),
                   [&](int row) { return text(values, row, column); });
    sortBy(keys, isDescending, std::less<>(), rows);
}
