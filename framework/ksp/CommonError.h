#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QString>

#include <stdexcept>

namespace ksp {

/// The framework's error: a text for the user. what() is the same text in UTF-8.
class HOSTFRAMEWORK_EXPORT CommonError : public std::runtime_error
{
public:
    explicit CommonError(const QString& text);
    ~CommonError() override;
    QString text() const;
};

} // namespace ksp
