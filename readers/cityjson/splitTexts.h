#pragma once

#include <QtCore/QByteArray>

#include <vector>

namespace readers {

/// The JSON texts that stand one after the other, one or several a line; they point into the bytes, which
/// must outlive them. What is no JSON is left for its reader to refuse; there is always one text.
std::vector<QByteArray> splitTexts(const QByteArray& bytes);

} // namespace readers
