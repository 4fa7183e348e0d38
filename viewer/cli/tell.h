#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

/// One line on standard error, after the program's name; control characters are written out.
void tell(const QString& text);
/// Writes to standard output. Throws ksp::CommonError when it does not take all of it.
void print(const QByteArray& text);
/// Makes sure that standard input, output and error are open, so that no file of ours becomes one of them;
/// writing to an output that was closed fails then as it should. So does writing more than a file may hold,
/// which would end the program otherwise.
void holdStandardStreams();
