#pragma once

#include <QtCore/QString>

#include <functional>

namespace ksp {

/// Runs foreign code; returns what it threw as text of one line, or an empty text. Internal to the framework.
QString runGuarded(const std::function<void()>& work);

} // namespace ksp
