#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

namespace enums {

/// Registers the keys and captions of the module's type identifiers with the host; once a process, later
/// calls do nothing. The plug-in calls it when it extends the application.
VIEWER3DMODULE_EXPORT void initEnumData();

} // namespace enums
