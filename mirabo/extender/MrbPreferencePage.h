#pragma once

#include "mirabo/extender/MrbExport.h"

#include <QWidget>

/// A page of the preferences dialog. Made anew each time the dialog opens; the dialog owns it.
class MRBEXT_API MrbPreferencePage : public QWidget {
    Q_OBJECT

public:
    explicit MrbPreferencePage(QWidget* parent = nullptr);
    ~MrbPreferencePage() override;

    /// Shows the values in force. Called before the page is seen.
    virtual void load() = 0;
    /// Puts what the page shows in force; on OK, and on Apply, after which the page stays open.
    /// Cancel calls nothing.
    virtual void save() = 0;
};
