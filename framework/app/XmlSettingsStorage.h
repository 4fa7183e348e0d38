#pragma once

#include <framework/HostFramework_export.h>
#include <framework/app/ISettingsStorage.h>

#include <QtXml/QDomDocument>

/// Settings in an XML file: <settings><KEY .../>...</settings>. The file is written as a whole or not at all.
class HOSTFRAMEWORK_EXPORT XmlSettingsStorage : public ISettingsStorage
{
public:
    /// Reads the file when there is one. A file that cannot be read or parsed gives one line in the log and
    /// an empty store, and is kept under the name path + ".damaged", in place of one kept earlier, when save
    /// replaces it; when save fails it is where it was. What is no regular file is neither read nor replaced.
    /// An empty path: a store in memory.
    explicit XmlSettingsStorage(const QString& path);
    ~XmlSettingsStorage() override;

    QDomElement getElement(const QString& key) const override;
    QDomElement getCreateElement(const QString& key) override;
    void remove(const QString& key) override;
    bool save() override;

private:
    QString m_path;
    QDomDocument m_document;
    bool m_damaged = false;
};
