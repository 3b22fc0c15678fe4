// One package of the software-distribution catalog: keyed by name "." version,
// provider tag "TESSEL", with the fields name, version, uninstData, isInstalled,
// isCommitted, backupState, rebootRequired, isDiscovered, isHidden and errorState.
//
// A package read from the listing keeps its texts as the listing's bytes (shared by
// every package of that listing) and its five state letters, and makes a field's
// value the first time it is asked for: a catalog holds many thousands of packages
// of which a query reads a few fields, and ten map entries of wide strings a package
// are several times the size of the listing. Through getProperty such a package
// reads exactly as if every field had been stored when the listing was read.
#ifndef REGPLUGIN_CROSS_TESSEL_TESSELPACKAGE_H
#define REGPLUGIN_CROSS_TESSEL_TESSELPACKAGE_H

#include <cstddef>
#include <memory>

#include "base/ByteBuffer.h"
#include "common/RegistryPackage.h"

namespace RegPlugin {

class TesselPackage : public RegistryPackage {
  public:
    // The fields, in the order in which a record sets them.
    enum Field {
        FIELD_NAME,
        FIELD_VERSION,
        FIELD_UNINST_DATA,
        FIELD_IS_INSTALLED,
        FIELD_IS_COMMITTED,
        FIELD_BACKUP_STATE,
        FIELD_REBOOT_REQUIRED,
        FIELD_IS_DISCOVERED,
        FIELD_IS_HIDDEN,
        FIELD_ERROR_STATE,
        FIELD_COUNT
    };

    // `length` bytes of a listing from `offset` on.
    struct Span {
        std::size_t offset;
        std::size_t length;
    };

    // The number of state letters a package keeps.
    static const std::size_t kStateLetters = 5;

    // Keyed by `key`, type PRODUCT, no properties and nothing to make them from.
    explicit TesselPackage(const PluginSDK::String& key);
    // Keyed by `key`, its name, version and uninstall data the UTF-8 bytes of
    // `listing` at the spans, and `state` its five state letters (a letter outside
    // ASCII as 0: it matches no letter). The fields are made when asked for.
    TesselPackage(const PluginSDK::String& key, std::shared_ptr<const ByteBuffer> listing,
                  const Span& name, const Span& version, const Span& uninstData,
                  const char (&state)[kStateLetters]);
    ~TesselPackage() override;

    // Stores the field `name` when the package was read from a listing, and returns
    // 0; any other name, or a package made without a listing, gives
    // REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND and stores nothing. A field already stored
    // (setProperty) is kept.
    TErrorCode retrieveProperty(const PluginSDK::String& name) override;

    // Stores `value` under `key`, replacing an earlier value. Returns 0.
    TErrorCode setProperty(const PluginSDK::String& key, const PluginSDK::String& value);

    // The provider tag "TESSEL", one string shared by every package.
    static const PluginSDK::String& providerTag();

    // The name of `field` ("name", ..., "errorState"), one string for every package.
    static const PluginSDK::String& fieldName(Field field);
    // The value of `field` for the state `letters` (name, version and uninstall data
    // have none: the empty text): "true" or "false" for the flags, "prepared",
    // "restored", "undoable" or empty for the backup state, "changing", "error" or
    // empty for the error state. One string for every package.
    static const PluginSDK::String& stateValue(Field field,
                                               const wchar_t (&letters)[kStateLetters]);

  private:
    std::shared_ptr<const ByteBuffer> m_listing;  // null: nothing to make fields from
    Span m_name;
    Span m_version;
    Span m_uninstData;
    char m_state[kStateLetters];
};

}  // namespace RegPlugin

#endif
