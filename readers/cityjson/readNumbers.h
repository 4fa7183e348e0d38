#pragma once

#include <framework/ksp/StagedProgress.h>

#include <QtCore/QByteArray>

#include <functional>

namespace readers {

/// Reads a list of numbers ("[1,2,3]") or a list of such lists, each of which is one row. Throws
/// ksp::CommonError, which begins with the name, unless each row has exactly width numbers (at most 16).
/// add: is called for each row.
void readNumberRows(const QByteArray& text, const QString& name, std::size_t width,
                    const std::function<void(const double* row)>& add, ksp::StagedProgress progress);
void readNumberRow(const QByteArray& text, const QString& name, std::size_t width, double* row);

} // namespace readers
