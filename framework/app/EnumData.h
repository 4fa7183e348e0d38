#pragma once

#include <framework/HostFramework_export.h>

#include <QtCore/QString>

#include <vector>

/// The record of one type identifier: its key in files and its caption for the user (may be empty).
struct EnumData
{
    int id = 0;
    QString key;
    QString caption;
};

/// Adds a record to the application-wide list; an identifier or key that is there already is refused with a
/// line in the log. Returns whether it was added.
HOSTFRAMEWORK_EXPORT bool registerEnumData(const EnumData& data);
/// The record of an identifier or key, or null. Pointers stay good for the life of the process.
HOSTFRAMEWORK_EXPORT const EnumData* findEnumData(int id);
HOSTFRAMEWORK_EXPORT const EnumData* findEnumData(const QString& key);
/// All records, in the order of registration.
HOSTFRAMEWORK_EXPORT std::vector<EnumData> getEnumData();
