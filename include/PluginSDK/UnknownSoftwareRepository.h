// An iterator over installed software that no rule recognised.
//
// The host calls init(), then, while getNext() has not returned
// ERROR_NO_MORE_ITEMS, the getters on the current package followed by getNext().
// A getter that has nothing to give leaves its string unchanged.
#ifndef PLUGINSDK_UNKNOWNSOFTWAREREPOSITORY_H
#define PLUGINSDK_UNKNOWNSOFTWAREREPOSITORY_H

#include "PluginSDK/String.h"
#include "PluginSDK/Types.h"
#include "base/Export.h"

namespace PluginSDK {

class HOSTSDK_API UnknownSoftwareRepository {
  public:
    UnknownSoftwareRepository();
    virtual TErrorCode init() = 0;
    virtual TErrorCode getNext() = 0;
    virtual TErrorCode getProvider(String* out) = 0;
    virtual TErrorCode getVendor(String* out) = 0;
    virtual TErrorCode getName(String* out) = 0;
    virtual TErrorCode getVersion(String* out) = 0;
    virtual TErrorCode getInstallDir(String* out) = 0;
    virtual int getSize() = 0;
    // The destructor comes last in this class's table.
    virtual ~UnknownSoftwareRepository();

    UnknownSoftwareRepository(const UnknownSoftwareRepository&) = delete;
    UnknownSoftwareRepository& operator=(const UnknownSoftwareRepository&) = delete;
};

}  // namespace PluginSDK

#endif
