#pragma once

#include <framework/app/Application.h>
#include <framework/app/IAppExtension.h>
#include <framework/app/IModelExtension.h>
#include <framework/app/ProjectGUI.h>

#include <gtest/gtest.h>

/// The folder of the built plug-ins.
inline QString pluginFolder()
{
    return QStringLiteral(V3D_BINARY_DIR "/lib/viewer3d/plugins");
}

/// What became of the module when the folder was loaded; without a path when it was not found.
inline PluginLoader::Plugin findModule(const std::vector<PluginLoader::Plugin>& plugins)
{
    for (const PluginLoader::Plugin& plugin : plugins)
        if (plugin.className == QLatin1String("Viewer3dModule")) return plugin;
    return {};
}

/// Loads the module through the host's loader, without any application.
class PluginTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_loader.load({pluginFolder()});
        plugin = findModule(m_loader.getPlugins());
        ASSERT_FALSE(plugin.path.isEmpty()) << "no module in " << qPrintable(pluginFolder());
        ASSERT_NE(plugin.instance, nullptr) << qPrintable(plugin.error);
        app = qobject_cast<IAppExtension*>(plugin.instance);
        model = qobject_cast<IModelExtension*>(plugin.instance);
        gui = qobject_cast<ProjectGUI::IExtender*>(plugin.instance);
        ASSERT_TRUE(app && model && gui);
    }

    PluginLoader::Plugin plugin;
    IAppExtension* app = nullptr;
    IModelExtension* model = nullptr;
    ProjectGUI::IExtender* gui = nullptr;

private:
    PluginLoader m_loader;
};
