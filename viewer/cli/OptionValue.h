#pragma once

#include <QtCore/QSize>
#include <QtCore/QStringList>
#include <QtGui/QColor>
#include <glm/glm.hpp>

#include <vector>

/// The values that options are given, read from their text. All throw UsageError, whose text begins with the
/// option and its value as they were given. option: its name without dashes.
namespace OptionValue {

/// The finite numbers between commas, however many; none when one of them is not a number.
std::vector<double> numbers(const QString& text);
/// Three numbers between commas, none of them larger than 1e12.
glm::dvec3 point(const QString& option, const QString& text);
/// WIDTHxHEIGHT in pixels, a size that pictures can have.
QSize size(const QString& option, const QString& text);
/// A finite number.
double number(const QString& option, const QString& text);
/// The number of the word in the list; capital letters do not matter.
int word(const QString& option, const QString& text, const QStringList& words);
/// A name, #rrggbb, #aarrggbb or transparent.
QColor color(const QString& option, const QString& text);

/// Whether the coordinates are larger than any that make sense, and lose their decimals.
bool isTooFar(const glm::dvec3& point);

} // namespace OptionValue
