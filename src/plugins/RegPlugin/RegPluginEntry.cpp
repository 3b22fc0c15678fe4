#include "RegPlugin.h"

extern "C" {

PluginSDK::Plugin* createPlugin() {
    return new PluginSDK::RegPlugin();
}

void destroyPlugin(PluginSDK::Plugin* plugin) {
    delete plugin;
}

}  // extern "C"
