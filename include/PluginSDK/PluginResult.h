// The host's truth texts. Scalar expressions that answer true or false set their
// result to one of these. They are deliberately "TRUE" and "FALSE", not the
// lower-case words that plug-ins use inside their own data.
#ifndef PLUGINSDK_PLUGINRESULT_H
#define PLUGINSDK_PLUGINRESULT_H

#include "base/Export.h"

extern HOSTSDK_API const wchar_t* const PLUGIN_RESULT_TRUE;
extern HOSTSDK_API const wchar_t* const PLUGIN_RESULT_FALSE;

#endif
