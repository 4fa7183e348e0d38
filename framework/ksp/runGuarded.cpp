#include <framework/ksp/runGuarded.h>

#include <exception>

namespace ksp {

QString runGuarded(const std::function<void()>& work)
{
    try {
        work();
        return {};
    } catch (const std::exception& error) {
        const QString text = QString::fromUtf8(error.what()).simplified();
        return text.isEmpty() ? QStringLiteral("exception without text") : text;
    } catch (...) {
        return QStringLiteral("unknown exception");
    }
}

} // namespace ksp
