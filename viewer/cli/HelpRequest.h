#pragma once

#include <QtCore/QString>

/// Text that was asked for instead of work.
struct HelpRequest
{
    QString text;
};
