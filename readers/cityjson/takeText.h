#pragma once

#include <QtCore/QByteArray>

namespace readers {

/// Takes the next of the JSON texts that stand one after the other, one or several a line: it points into the
/// bytes, which must outlive it. begin: where it begins; moved to where the next one does, or to the end.
/// What is no JSON is left for its reader to refuse.
QByteArray takeText(const QByteArray& bytes, int& begin);

} // namespace readers
