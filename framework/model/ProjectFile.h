#pragma once

#include <framework/ksp/LONGID.h>
#include <framework/ksp/StagedProgress.h>
#include <framework/model/CModelElement.h>

#include <QtCore/QByteArray>

#include <functional>
#include <map>
#include <memory>
#include <vector>

/// What a project file holds, apart from any project: CProject fills one from the file and takes it over when
/// it is whole. Internal to CProject.
///
/// The file is an archive of one object: a mark, the next fresh identifier, the settings (type, bytes) and
/// the elements by type (identifier, bytes). The bytes of an element are an archive of its own, which can be
/// kept and written again without being understood.
class ProjectFile
{
public:
    using Elements = std::vector<std::unique_ptr<CModelElement>>;
    /// Makes an empty element to load into; null when nobody knows the type.
    using Maker = std::function<std::unique_ptr<CModelElement>(int type)>;

    struct UnknownElement
    {
        LONGID id;
        QByteArray bytes;
    };
    using UnknownElements = std::map<int, std::vector<UnknownElement>>;
    using UnknownSettings = std::map<int, QByteArray>;

    /// What is written as it is: live elements, not owned.
    struct Source
    {
        LONGID nextId = 1;
        std::vector<CModelElement*> settings;
        std::map<int, std::vector<CModelElement*>> elements;
    };

    LONGID nextId = 1;
    std::map<int, std::unique_ptr<CModelElement>> settings;
    std::map<int, Elements> elements;
    UnknownSettings unknownSettings;
    UnknownElements unknownElements;

    /// Throws ksp::CommonError or what the elements throw, and ksp::Canceled.
    static QByteArray store(const Source& source, const UnknownSettings& unknownSettings,
                            const UnknownElements& unknownElements, ksp::StagedProgress progress);
    /// Throws ksp::CFileException without the file's name, or what the elements throw, and ksp::Canceled.
    static ProjectFile load(const QByteArray& bytes, const Maker& makeSettings, const Maker& makeElement,
                            ksp::StagedProgress progress);

    static QByteArray storeElement(CModelElement& element);
    static void loadElement(CModelElement& element, const QByteArray& bytes);

private:
    void loadSettings(CQtArchive& archive, const Maker& makeSettings);
    void loadElements(CQtArchive& archive, const Maker& makeElement, ksp::StagedProgress& progress);
};
