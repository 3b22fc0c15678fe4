#include "cross/tessel/TesselPackage.h"

#include <utility>

#include "RegPluginConstants.h"

namespace RegPlugin {

namespace {

// The field names and the fixed values, made once and shared by every package (the
// host's strings are reference-counted).
struct SharedTexts {
    static const SharedTexts& get() {
        static const SharedTexts texts;
        return texts;
    }

    PluginSDK::String names[TesselPackage::FIELD_COUNT] = {
        REG_PLUGIN_PROPERTY_FIELD_NAME,
        REG_PLUGIN_PROPERTY_FIELD_VERSION,
        REG_PLUGIN_PROPERTY_FIELD_UNINSTDATA,
        REG_PLUGIN_PROPERTY_FIELD_IS_INSTALLED,
        REG_PLUGIN_PROPERTY_FIELD_IS_COMMITTED,
        REG_PLUGIN_PROPERTY_FIELD_BACKUP_STATE,
        REG_PLUGIN_PROPERTY_FIELD_REBOOT_REQUIRED,
        REG_PLUGIN_PROPERTY_FIELD_IS_DISCOVERED,
        REG_PLUGIN_PROPERTY_FIELD_IS_HIDDEN,
        REG_PLUGIN_PROPERTY_FIELD_ERROR,
    };
    PluginSDK::String yes{REG_PLUGIN_TRUE};
    PluginSDK::String no{REG_PLUGIN_FALSE};
    PluginSDK::String none;
    PluginSDK::String prepared{L"prepared"};
    PluginSDK::String restored{L"restored"};
    PluginSDK::String undoable{L"undoable"};
    PluginSDK::String changing{L"changing"};
    PluginSDK::String error{L"error"};
};

}  // namespace

TesselPackage::TesselPackage(const PluginSDK::String& key)
    : RegistryPackage(key, providerTag()),
      m_name{0, 0},
      m_version{0, 0},
      m_uninstData{0, 0},
      m_state{} {}

TesselPackage::TesselPackage(const PluginSDK::String& key,
                             std::shared_ptr<const ByteBuffer> listing, const Span& name,
                             const Span& version, const Span& uninstData,
                             const char (&state)[kStateLetters])
    : RegistryPackage(key, providerTag()),
      m_listing(std::move(listing)),
      m_name(name),
      m_version(version),
      m_uninstData(uninstData) {
    for (std::size_t i = 0; i < kStateLetters; ++i) {
        m_state[i] = state[i];
    }
}

TesselPackage::~TesselPackage() = default;

TErrorCode TesselPackage::retrieveProperty(const PluginSDK::String& name) {
    if (m_listing == nullptr) {
        return REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
    }
    const SharedTexts& texts = SharedTexts::get();
    int field = 0;
    while (field < FIELD_COUNT && texts.names[field] != name) {
        ++field;
    }
    const Span* span = nullptr;
    switch (field) {
        case FIELD_COUNT:
            return REG_PLUGIN_ERROR_PROPERTY_NOT_FOUND;
        case FIELD_NAME:
            span = &m_name;
            break;
        case FIELD_VERSION:
            span = &m_version;
            break;
        case FIELD_UNINST_DATA:
            span = &m_uninstData;
            break;
        default:
            break;
    }
    if (span != nullptr) {
        properties.emplace(texts.names[field],
                           PluginSDK::String(m_listing->data() + span->offset, span->length));
    } else {
        wchar_t letters[kStateLetters];
        for (std::size_t i = 0; i < kStateLetters; ++i) {
            letters[i] = static_cast<wchar_t>(static_cast<unsigned char>(m_state[i]));
        }
        properties.emplace(texts.names[field], stateValue(static_cast<Field>(field), letters));
    }
    return PluginSDK::RESULT_OK;
}

TErrorCode TesselPackage::setProperty(const PluginSDK::String& key,
                                      const PluginSDK::String& value) {
    return RegistryPackage::setProperty(key, value);
}

const PluginSDK::String& TesselPackage::providerTag() {
    static const PluginSDK::String tag(L"TESSEL");
    return tag;
}

const PluginSDK::String& TesselPackage::fieldName(Field field) {
    return SharedTexts::get().names[field];
}

const PluginSDK::String& TesselPackage::stateValue(Field field,
                                                   const wchar_t (&letters)[kStateLetters]) {
    const SharedTexts& texts = SharedTexts::get();
    // A truth-valued field: true when the letter at `position` is `letter`.
    auto flag = [&](int position, wchar_t letter) -> const PluginSDK::String& {
        return letters[position] == letter ? texts.yes : texts.no;
    };
    switch (field) {
        case FIELD_IS_INSTALLED:
            return flag(0, L'I');
        case FIELD_IS_COMMITTED:
            return flag(1, L'C');
        case FIELD_BACKUP_STATE:
            return letters[2] == L'P'   ? texts.prepared
                   : letters[2] == L'R' ? texts.restored
                   : letters[2] == L'U' ? texts.undoable
                                        : texts.none;
        // The three flags share the fourth letter: at most one of them is true.
        case FIELD_REBOOT_REQUIRED:
            return flag(3, L'B');
        case FIELD_IS_DISCOVERED:
            return flag(3, L'D');
        case FIELD_IS_HIDDEN:
            return flag(3, L'H');
        case FIELD_ERROR_STATE:
            return letters[4] == L'C'   ? texts.changing
                   : letters[4] == L'E' ? texts.error
                                        : texts.none;
        default:
            return texts.none;
    }
}

}  // namespace RegPlugin
