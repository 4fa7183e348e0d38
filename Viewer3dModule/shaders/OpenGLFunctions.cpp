#include <Viewer3dModule/shaders/OpenGLFunctions.h>

#include <QtGui/QOpenGLContext>

#include <algorithm>
#include <vector>

namespace {

struct ContextTable
{
    const QOpenGLContext* context;
    OpenGLFunctions* table;
    bool isGoing; // the context is being destroyed: what it has is not kept
};

// The tables of the contexts seen on this thread: one or a few.
std::vector<ContextTable>& tables()
{
    static thread_local std::vector<ContextTable> entries;
    return entries;
}

OpenGLFunctions* tableOf(QOpenGLContext& context)
{
    auto* table = context.versionFunctions<OpenGLFunctions>();
    return table && table->initializeOpenGLFunctions() ? table : nullptr;
}

// Others who listen to the context's end may ask after this has heard of it. Were the entry gone by then,
// there would be a new one, which the next context at the same address would find.
OpenGLFunctions* remember(QOpenGLContext* context)
{
    OpenGLFunctions* table = tableOf(*context);
    tables().push_back({context, table, false});
    QObject::connect(context, &QOpenGLContext::aboutToBeDestroyed, context, [context] {
        for (ContextTable& entry : tables())
            entry.isGoing = entry.isGoing || entry.context == context;
    });
    QObject::connect(context, &QObject::destroyed, [context] {
        auto& entries = tables();
        entries.erase(
            std::remove_if(entries.begin(), entries.end(),
                           [context](const ContextTable& entry) { return entry.context == context; }),
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
        if (entry.context == context) return entry.isGoing ? tableOf(*context) : entry.table;
    return remember(context);
}
