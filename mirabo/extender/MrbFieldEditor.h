#pragma once

#include "mirabo/extender/MrbExport.h"
#include "mirabo/extender/MrbExtension.h"
#include "mirabo/extender/MrbFieldEdit.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <vector>

class SoType;

/// A widget that shows the value of a MrbFieldEdit and changes it.
///
/// It is told by showValue() when to show the value; while the user is typing it is not, but marked
/// (isOutdated(), a property for style sheets as well) when the value changes underneath.
class MRBEXT_API MrbFieldWidget : public QWidget {
    Q_OBJECT
    Q_PROPERTY(bool outdated READ isOutdated NOTIFY outdatedChanged)

public:
    /// The room that there is.
    enum class Form {
        Full,   ///< in the field editor's dock
        Compact ///< in one line, in the place of a value in a list
    };

    /// `edit` must outlive the widget.
    MrbFieldWidget(MrbFieldEdit* edit, QWidget* parent);
    ~MrbFieldWidget() override;

    MrbFieldEdit* edit() const { return m_edit; }

    /// Shows the field's present value. Called soon after construction and after every change,
    /// except while isTyping().
    virtual void showValue() = 0;
    /// The user has begun an input that is not applied yet. False by default.
    virtual bool isTyping() const { return false; }
    /// The fields cannot be changed (true), or can again. By default the whole widget is disabled.
    virtual void setReadOnly(bool on);
    /// Applies what was typed. Called when the user goes on to another field. Nothing by default.
    virtual void commit() {}

    /// The value changed while the user was typing.
    bool isOutdated() const { return m_isOutdated; }
    /// Has it shown when the user is done with typing.
    void typingEnded();

Q_SIGNALS:
    void outdatedChanged(bool outdated);
    /// The user is done with it: a compact form is closed.
    void finished();

private:
    friend class MrbFieldEditors;
    void takeChange();
    void setOutdated(bool on);

    MrbFieldEdit* m_edit;
    bool m_isOutdated = false;
    bool m_isReadOnly = false;
};

/// An extension that makes widgets for fields of some types.
///
/// While it is active it is the editor of its types; when several are active for one type, the one
/// that was activated last. A type without an editor of its own gets that of its nearest ancestor:
/// "SField" and "MField" are those of all single-value and all multiple-value types.
class MRBEXT_API MrbFieldEditor : public MrbExtension {
    Q_OBJECT

public:
    MrbFieldEditor();
    ~MrbFieldEditor() override;

    /// The names of the field types, such as "SFFloat".
    virtual QStringList getFieldTypes() const = 0;
    /// A new widget, a child of `parent`, or null when there is none in that form.
    virtual MrbFieldWidget* createWidget(MrbFieldEdit* edit, MrbFieldWidget::Form form,
                                         QWidget* parent) = 0;

    /// Register and take back the types; an override calls them.
    bool activate() override;
    /// Hides the widgets, too, and deletes them with the next pass of the event loop.
    void deactivate() override;

private:
    friend class MrbFieldEditors;
    QStringList m_types;                             ///< since it was activated
    std::vector<QPointer<MrbFieldWidget>> m_widgets; // Not owned; their parents'.
};

/// The active editors. GUI thread only.
class MRBEXT_API MrbFieldEditors final : public QObject {
    Q_OBJECT

public:
    static MrbFieldEditors* getInstance();

    /// The editor of a field type; null for none.
    MrbFieldEditor* find(SoType fieldType) const;
    /// A widget of the editor of the edited fields' type, with their value in it, a child of
    /// `parent`; null when there is none in that form. It is deleted with its parent or with its
    /// editor, whichever goes first: keep a QPointer.
    MrbFieldWidget* create(MrbFieldEdit* edit, MrbFieldWidget::Form form, QWidget* parent) const;

Q_SIGNALS:
    /// An editor came or went.
    void editorsChanged();

private:
    friend class MrbFieldEditor;
    MrbFieldEditors();
    ~MrbFieldEditors() override;
    void add(MrbFieldEditor* editor);
    void remove(MrbFieldEditor* editor);

    std::vector<MrbFieldEditor*> m_editors; // Not owned; the last one wins.
};
