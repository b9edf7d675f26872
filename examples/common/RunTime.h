#pragma once

#include <QStringList>

/// Returns the SECONDS of "--run SECONDS"; 0 without it.
inline double secondsToRun(const QStringList& arguments)
{
    const int at = arguments.indexOf("--run");
    return at < 0 || at + 1 >= arguments.size() ? 0 : arguments[at + 1].toDouble();
}
