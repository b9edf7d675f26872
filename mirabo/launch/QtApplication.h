#pragma once

#include <memory>

class QApplication;

namespace mirabo {

/// The Qt application: borrowed from the host where it has one, else our own.
class QtApplication {
public:
    QtApplication();
    ~QtApplication();

    /// Borrows or creates; false, with the cause told, when none can be had. The arguments are used
    /// for our own only; without any it gets a name.
    bool obtain();
    bool obtain(int& argc, char** argv);
    bool isOwned() const { return m_owned; }
    /// Deletes our own, unless its loop runs: then the next start or end has it. Leaves a borrowed
    /// one alone.
    void release();

private:
    static void preparePluginPath();

    bool m_owned = false;
    QApplication* m_application = nullptr; // Owned while m_owned.
};

} // namespace mirabo
