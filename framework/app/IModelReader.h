#pragma once

#include <framework/HostFramework_export.h>
#include <framework/ksp/StagedProgress.h>
#include <framework/model/CModelElement.h>

#include <QtCore/QStringList>
#include <QtCore/QVariant>
#include <QtCore/QtPlugin>

#include <memory>
#include <vector>

/// A plug-in that reads files into model elements (features), found by qobject_cast among the plug-in
/// objects.
class HOSTFRAMEWORK_EXPORT IModelReader
{
public:
    virtual ~IModelReader() = default;
    /// The extensions that it reads, lower case without the dot.
    virtual QStringList getExtensions() const = 0;
    /// Reads a file into elements that belong to no model yet; the host adds them in one batch. Throws
    /// ksp::CommonError with the path and the reason for the user, or ksp::Canceled; nothing is read in part.
    virtual std::vector<std::unique_ptr<CModelElement>> read(const QString& path,
                                                             ksp::StagedProgress progress) = 0;

    /// Whether the file's content is of the reader's format, as far as a look into it tells; the host asks
    /// where several readers read its extension. True by default, as for a reader that takes what no other
    /// one wants.
    virtual bool recognizes(const QString& /*path*/) const { return true; }
    /// Sets an option for the reads to come; an invalid value takes it back. Each reader knows the names of
    /// its own options and does nothing for others, as here by default.
    virtual void setOption(const QString& /*name*/, const QVariant& /*value*/) {}
};

Q_DECLARE_INTERFACE(IModelReader, "org.photomodel.host.IModelReader/1.1")
