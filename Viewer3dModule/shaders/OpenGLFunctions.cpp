#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtGui/QOpenGLContext>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

using ContextTable = std::pair<const QOpenGLContext*, OpenGLFunctions*>;

// The tables of the contexts seen on this thread: one or a few.
std::vector<ContextTable>& tables()
{
    static thread_local std::vector<ContextTable> entries;
    return entries;
}

OpenGLFunctions* remember(QOpenGLContext* context)
{
    auto* table = context->versionFunctions<OpenGLFunctions>();
    if (table && !table->initializeOpenGLFunctions()) table = nullptr;
    tables().emplace_back(context, table);
    QObject::connect(context, &QOpenGLContext::aboutToBeDestroyed, context, [context] {
        auto& entries = tables();
        entries.erase(std::remove_if(entries.begin(), entries.end(),
                                     [context](const ContextTable& entry) { return entry.first == context; }),
                      entries.end());
    });
    return table;
}

} // namespace

OpenGLFunctions* currentGLFunctions()
{
    QOpenGLContext* context = QOpenGLContext::currentContext();
    if (!context) return nullptr;
    for (const ContextTable& entry : tables())
        if (entry.first == context) return entry.second;
    return remember(context);
}
