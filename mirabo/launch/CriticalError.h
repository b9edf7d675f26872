#pragma once

#include <QString>

class SoError;

namespace mirabo {

/// Has the errors that the toolkit records on its error stack (broken invariants; nothing else gets
/// there) shown to the user, who chooses to end the process, to go on, or to read the call stack
/// and end it. Ended so, the process has the exit status 1, and nothing of it is cleaned up: it is
/// not known what is still sound.
///
/// Errors of other threads are shown by the GUI thread as soon as it can, and do not wait. While
/// one is shown others are only printed. Without a Qt application, and while the tool runs
/// unattended, the report goes to the standard error stream; unattended the process then ends.
void installCriticalErrorReport();
/// Gives the errors back to whoever had them before.
void removeCriticalErrorReport();

/// Returns the text of the report: the calls that led to the error, one a line, innermost first.
QString criticalErrorText(const SoError& error);

} // namespace mirabo
