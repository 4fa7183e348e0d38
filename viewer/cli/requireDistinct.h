#pragma once

#include <QtCore/QStringList>

/// Throws UsageError when two of the outputs are one file. Links are followed.
void requireDistinct(const QStringList& outputs);
