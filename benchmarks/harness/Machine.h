#pragma once

#include <QtCore/QString>

/// Where and of what something was measured.
struct Machine
{
    QString driver;    ///< of OpenGL, with its version
    QString processor; ///< with the number of its cores
    QString date;
    QString commit;

    /// This machine and day. commit: as the caller knows it.
    static Machine here(const QString& commit);
};
