#include <viewer/UnfinishedFiles.h>

#include <QtCore/QFile>

#include <algorithm>
#include <atomic>
#include <climits>

#include <unistd.h>

namespace {

/// A name that a handler of signals can read at any time: it counts only while isNoted.
struct Note
{
    std::atomic<bool> isNoted{false};
    char name[PATH_MAX] = {};
};

static_assert(std::atomic<bool>::is_always_lock_free);
Note notes[8];

} // namespace

void UnfinishedFiles::add(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    if (name.isEmpty() || name.size() >= PATH_MAX) return;
    for (Note& note : notes) {
        if (note.isNoted) continue;
        std::copy_n(name.constData(), name.size() + 1, note.name);
        note.isNoted = true;
        return;
    }
}

void UnfinishedFiles::remove(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    for (Note& note : notes)
        if (note.isNoted && name == note.name) note.isNoted = false;
}

void UnfinishedFiles::deleteAll()
{
    for (Note& note : notes)
        if (note.isNoted) unlink(note.name);
}
