// The one mark that puts a symbol of the plug-in into its dynamic symbol table.
// The plug-in is built with hidden visibility; only its entry points, its
// REG_PLUGIN_* constants and its RegPlugin:: path constants carry this mark.
#ifndef REGPLUGIN_REGPLUGINEXPORT_H
#define REGPLUGIN_REGPLUGINEXPORT_H

#define REG_PLUGIN_EXPORT __attribute__((visibility("default")))

#endif
