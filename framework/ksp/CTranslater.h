#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QString>

namespace ksp {

/// The host's translator of source texts, over the translators installed in the application object.
class HOSTFRAMEWORK_EXPORT CTranslater
{
public:
    static CTranslater& GetInstance();
    /// The translation of a source text (UTF-8) in a context; the text itself when there is none.
    QString translate(const char* context, const char* text) const;

private:
    CTranslater() = default;
};

} // namespace ksp

using ksp::CTranslater;
