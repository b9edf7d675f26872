#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QString>

#include <memory>
#include <vector>

class SoField;
class SoType;

/// Orders values in a list: numbers first, one after the other, then the text.
struct MRBEXT_API MrbSortKey {
    std::vector<double> numbers;
    QString text;

    /// The numbers in front of or between the words of a text, or the text itself.
    static MrbSortKey ofText(const QString& text);
    friend MRBEXT_API bool operator<(const MrbSortKey& a, const MrbSortKey& b);
};

/// How the tool shows the fields of a type in its lists, on the clipboard and in tool tips. The
/// default is the text of scene files.
///
/// All operations are called under a lock of the graph, in the midst of painting, and for a field
/// that dies in another thread there: they are quick whatever the field holds, keep no state, and
/// neither throw nor edit.
class MRBEXT_API MrbFieldPresentation {
public:
    /// Values of a multiple-value field beyond this many are not written out.
    static constexpr int kMaxShownValues = 6;
    /// Fields of more values than this are copied as they are shown.
    static constexpr int kMaxCopiedValues = 100'000;
    /// Characters of a value that a tool tip shows.
    static constexpr int kMaxToolTipLength = 2000;

    struct Shown {
        QString text;
        bool isImage = false; ///< shown without text
    };

    virtual ~MrbFieldPresentation();

    /// One line. Cost: independent of how many values the field holds.
    virtual Shown shown(const SoField& field) const;
    /// The value for the clipboard: in full where its size allows, as SoField::set() reads it.
    virtual QString clipboardText(const SoField& field) const;
    /// `shown` is what the row says.
    virtual QString toolTip(const SoField& field, const QString& shown) const;
    /// Whether the value can be edited as text.
    virtual bool isEditable(const SoField& field) const;
    /// Whether the field watch takes the field.
    virtual bool isWatchable(const SoField& field) const;
    virtual MrbSortKey sortKey(const SoField& field, const QString& shown) const;
};

/// The presentations by field type, read by the lists, the watch and the editors.
///
///     MrbFieldPresentations::Registration m_registration{
///         SoSFTime::getClassTypeId(), std::make_unique<DatePresentation>()};
class MRBEXT_API MrbFieldPresentations {
public:
    /// While it lives the presentation is that of the type and of the types derived from it which
    /// have none of their own; the one registered last wins.
    class MRBEXT_API Registration {
    public:
        Registration(SoType type, std::unique_ptr<MrbFieldPresentation> presentation);
        ~Registration();
        Registration(const Registration&) = delete;
        Registration& operator=(const Registration&) = delete;

    private:
        int m_type;
        std::shared_ptr<const MrbFieldPresentation> m_presentation;
    };

    /// Never null. Cost: a look into a table for each ancestor of the field's type. Any thread.
    static std::shared_ptr<const MrbFieldPresentation> of(const SoField& field);
};
