#pragma once

#include <QtCore/QString>

/// The text with every character that is no visible one and no blank written as an escape (\n, \t, \x1b,
/// \u202e): what comes from files can neither break a line nor steer a terminal, and stays readable
/// otherwise.
QString printable(const QString& text);

/// The same in double quotes, with quotes and backslashes inside escaped, so that the end of the text is
/// never in doubt.
QString quoted(const QString& text);

/// A file's name as messages show it: as it is, and in quotes where that would be nothing.
QString shownName(const QString& path);
