// A small plug-in object implemented in the test, so that regscan's pieces can be
// driven without the real plug-in.
//
// Expressions:
//   "Echo"   scalar: "code=<v>|field=<v>|x=<v>", "-" for an absent property; the
//            code is the number in property "rc" (0 without)
//   "Keys"   vector: the comma-separated keys of property "keys"; code from "rc"
//   "List"   vector: the keys "k1", "k2"
//   "Info"   scalar: "<field> of <code>"; field "vendor", and "displayVersion" of the
//            key "k1", fail with -13200
//   "Broken" vector: fails with -13111
// Any other name gives -10008 and a null expression.
#ifndef REGSCAN_TESTS_HOST_FAKEPLUGIN_H
#define REGSCAN_TESTS_HOST_FAKEPLUGIN_H

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "PluginSDK/Plugin.h"
#include "PluginSDK/ScalarOperand.h"
#include "PluginSDK/UnknownSoftwareRepository.h"
#include "PluginSDK/VectorOperand.h"

namespace fake {

inline std::wstring property(const PluginSDK::Expression& e, const wchar_t* name) {
    const wchar_t* value = e.getProperty(name);
    return value != nullptr ? value : L"-";
}

inline TErrorCode propertyCode(const PluginSDK::Expression& e) {
    const wchar_t* rc = e.getProperty(L"rc");
    return rc != nullptr ? static_cast<TErrorCode>(std::stol(rc)) : 0;
}

class Echo : public PluginSDK::ScalarOperand {
  public:
    void disposeExpression() override {}
    TErrorCode getScalarResult(PluginSDK::String& result) override {
        result = (L"code=" + property(*this, L"code") + L"|field=" + property(*this, L"field") +
                  L"|x=" + property(*this, L"x"))
                     .c_str();
        return propertyCode(*this);
    }
};

class Info : public PluginSDK::ScalarOperand {
  public:
    void disposeExpression() override {}
    TErrorCode getScalarResult(PluginSDK::String& result) override {
        result = L"";
        const std::wstring field = property(*this, L"field");
        if (field == L"vendor" ||
            (field == L"displayVersion" && property(*this, L"code") == L"k1")) {
            return -13200;
        }
        result = (property(*this, L"field") + L" of " + property(*this, L"code")).c_str();
        return 0;
    }
};

class Keys : public PluginSDK::VectorOperand {
  public:
    explicit Keys(std::wstring fixed = L"", TErrorCode code = 0) : m_fixed(fixed), m_code(code) {}
    void disposeExpression() override {}
    TErrorCode getVectorResult(PluginSDK::StringVector& result) override {
        std::wstring keys = getProperty(L"keys") != nullptr ? getProperty(L"keys") : m_fixed;
        std::size_t start = 0;
        while (!keys.empty() && start <= keys.size()) {
            std::size_t comma = std::min(keys.find(L',', start), keys.size());
            result.addString(PluginSDK::String(keys.substr(start, comma - start)));
            start = comma + 1;
        }
        return m_code != 0 ? m_code : propertyCode(*this);
    }

  private:
    std::wstring m_fixed;
    TErrorCode m_code;
};

// One position of the iterator; a missing field leaves the caller's string as it was.
struct Entry {
    std::optional<std::wstring> provider, vendor, name, version, installDir;
};

class Repository : public PluginSDK::UnknownSoftwareRepository {
  public:
    Repository(std::vector<Entry> entries, bool neverEnds, int* live)
        : m_entries(std::move(entries)), m_neverEnds(neverEnds), m_live(live) {
        ++*m_live;
    }
    ~Repository() override { --*m_live; }
    TErrorCode init() override {
        m_position = 0;
        return 0;
    }
    TErrorCode getNext() override {
        if (m_neverEnds) {
            return 0;
        }
        if (m_position >= m_entries.size()) {
            return -10009;
        }
        ++m_position;
        return 0;
    }
    TErrorCode getProvider(PluginSDK::String* out) override { return get(&Entry::provider, out); }
    TErrorCode getVendor(PluginSDK::String* out) override { return get(&Entry::vendor, out); }
    TErrorCode getName(PluginSDK::String* out) override { return get(&Entry::name, out); }
    TErrorCode getVersion(PluginSDK::String* out) override { return get(&Entry::version, out); }
    TErrorCode getInstallDir(PluginSDK::String* out) override {
        return get(&Entry::installDir, out);
    }
    int getSize() override { return static_cast<int>(m_entries.size()); }

  private:
    TErrorCode get(std::optional<std::wstring> Entry::*field, PluginSDK::String* out) {
        std::size_t at = m_neverEnds ? 0 : m_position;
        if (at < m_entries.size() && m_entries[at].*field) {
            *out = (*(m_entries[at].*field)).c_str();
        }
        return 0;
    }
    std::vector<Entry> m_entries;
    bool m_neverEnds;
    int* m_live;
    std::size_t m_position = 0;
};

class Plugin : public PluginSDK::Plugin {
  public:
    std::vector<std::pair<std::wstring, std::wstring>> settings;  // setProperty calls
    std::vector<Entry> unknown;                                   // the iterator's content
    bool unknownNeverEnds = false;
    int liveExpressions = 0;
    int liveIterators = 0;

    void setProperty(const wchar_t* name, const wchar_t* value) override {
        settings.emplace_back(name, value);
    }
    PluginSDK::PluginVersion getVersion() const override { return {1, 2, 3, 4}; }
    const wchar_t* getName() const override { return L"Fake"; }
    PluginSDK::UnknownSoftwareRepository* getUnknownSoftware() override {
        return new Repository(unknown, unknownNeverEnds, &liveIterators);
    }
    TErrorCode initializePlugin() override {
        addExpression(L"Echo");
        return addExpression(L"Keys");
    }
    TErrorCode cleanupPlugin() override { return 0; }
    TErrorCode createExpression(const wchar_t* name, PluginSDK::Expression** out) override {
        if (name == nullptr || out == nullptr) {
            return -101;
        }
        std::wstring n = name;
        PluginSDK::Expression* created = nullptr;
        if (n == L"Echo") {
            created = new Echo;
        } else if (n == L"Info") {
            created = new Info;
        } else if (n == L"Keys") {
            created = new Keys;
        } else if (n == L"List") {
            created = new Keys(L"k1,k2");
        } else if (n == L"Broken") {
            created = new Keys(L"", -13111);
        }
        *out = created;
        if (*out == nullptr) {
            return -10008;
        }
        ++liveExpressions;
        return 0;
    }
    TErrorCode destroyExpression(PluginSDK::Expression* expression) override {
        if (expression != nullptr) {
            --liveExpressions;
            delete expression;
        }
        return 0;
    }
};

}  // namespace fake

#endif
