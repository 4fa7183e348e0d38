#include "PluginFixture.h"

#include <framework/app/ISettingsStorage.h>
#include <framework/graphics/InteractiveGraphicsScene.h>
#include <framework/ksp/IIdentifiable.h>
#include <framework/model/IElementFilter.h>
#include <framework/model/IPropertyHolder.h>
#include <framework/model/ModelElementCreator.h>

#include <QtCore/QFile>

#include <dlfcn.h>
#include <typeinfo>

namespace {

std::string symbolOf(const std::type_info& type)
{
    return std::string("_ZTI") + type.name();
}

/// Whether a loaded library, or one that it needs, shares its type information with others.
bool shares(const QString& library, const std::type_info& type)
{
    void* handle = dlopen(QFile::encodeName(library).constData(), RTLD_LAZY | RTLD_NOLOAD);
    if (!handle) return false;
    const bool found = dlsym(handle, symbolOf(type).c_str()) != nullptr;
    dlclose(handle);
    return found;
}

// Casts between libraries go by it.
TEST_F(PluginTest, InterfacesHaveOneTypeInformationInAllLibraries)
{
    for (const std::type_info* type :
         {&typeid(ksp::IIdentifiable), &typeid(Property::IPropertyHolder), &typeid(IElementFilter),
          &typeid(ModelElementCreator), &typeid(IAppExtension), &typeid(IModelExtension),
          &typeid(ProjectGUI::IExtender), &typeid(ISettingsStorage), &typeid(InteractiveGraphicsScene)}) {
        EXPECT_TRUE(shares(plugin.path, *type)) << type->name();
        EXPECT_EQ(dlsym(RTLD_DEFAULT, symbolOf(*type).c_str()), static_cast<const void*>(type))
            << type->name();
    }
}

} // namespace
