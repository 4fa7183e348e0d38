#pragma once

#include <framework/ksp/CQtArchive.h>

/// Bytes of an archive made without the archive: the head of the format before the given payload.
QByteArray sealArchive(const QByteArray& payload);
/// What follows the head.
QByteArray archivePayload(const QByteArray& archive);

/// An archive with nested objects, texts, variants and a list, and what reads all of it.
QByteArray makeSampleArchive();
void readSampleArchive(CQtArchive& archive);
