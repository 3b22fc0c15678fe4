// A fake plug-in for driving regscan's pieces. Expressions (others give -10008):
//   Info  scalar "<field> of <code>" ("-" when absent), code from property "rc";
//         -13200 for field vendor and for displayVersion of k1; empty with code 0
//         for displayVersion of a code starting with "blank"
//   Keys  vector of the comma-separated property "keys", code from property "rc"
#ifndef REGSCAN_TESTS_HOST_FAKEPLUGIN_H
#define REGSCAN_TESTS_HOST_FAKEPLUGIN_H

#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "PluginSDK/Plugin.h"
#include "PluginSDK/ScalarOperand.h"
#include "PluginSDK/UnknownSoftwareRepository.h"
#include "PluginSDK/VectorOperand.h"

namespace fake {

inline std::wstring property(const PluginSDK::Expression& e, const wchar_t* name,
                             const wchar_t* absent) {
    const wchar_t* value = e.getProperty(name);
    return value != nullptr ? value : absent;
}

inline TErrorCode propertyCode(const PluginSDK::Expression& e) {
    return static_cast<TErrorCode>(std::stol(property(e, L"rc", L"0")));
}

class Info : public PluginSDK::ScalarOperand {
  public:
    void disposeExpression() override {}
    TErrorCode getScalarResult(PluginSDK::String& result) override {
        std::wstring field = property(*this, L"field", L"-"), code = property(*this, L"code", L"-");
        bool fails = field == L"vendor" || (field == L"displayVersion" && code == L"k1");
        result = fails || (field == L"displayVersion" && code.rfind(L"blank", 0) == 0)
                     ? L""
                     : (field + L" of " + code).c_str();
        return fails ? -13200 : propertyCode(*this);
    }
};

class Keys : public PluginSDK::VectorOperand {
  public:
    void disposeExpression() override {}
    TErrorCode getVectorResult(PluginSDK::StringVector& result) override {
        std::wistringstream keys(property(*this, L"keys", L""));
        for (std::wstring key; std::getline(keys, key, L',');) {
            result.addString(key.c_str());
        }
        return propertyCode(*this);
    }
};

// One iterator position; a missing field leaves the caller's string as it was.
struct Entry {
    std::optional<std::wstring> provider, vendor, name, version, installDir;
};

// Walks `entries`; an endless one never leaves its first position.
class Repository : public PluginSDK::UnknownSoftwareRepository {
  public:
    Repository(std::vector<Entry> entries, bool endless, int& live)
        : m_entries(std::move(entries)), m_endless(endless), m_live(++live) {}
    ~Repository() override { --m_live; }
    TErrorCode init() override { return static_cast<TErrorCode>(m_at = 0); }
    TErrorCode getNext() override { return m_endless || ++m_at <= m_entries.size() ? 0 : -10009; }
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
        if (m_at < m_entries.size() && m_entries[m_at].*field) {
            *out = (*(m_entries[m_at].*field)).c_str();
        }
        return 0;
    }
    std::vector<Entry> m_entries;
    bool m_endless;
    int& m_live;  // the plug-in's count of live iterators
    std::size_t m_at = 0;
};

class Plugin : public PluginSDK::Plugin {
  public:
    std::vector<std::pair<std::wstring, std::wstring>> settings;  // setProperty calls
    std::vector<Entry> unknown;                                   // the iterator's content
    bool unknownNeverEnds = false;
    int liveExpressions = 0, liveIterators = 0;

    void setProperty(const wchar_t* name, const wchar_t* value) override {
        settings.emplace_back(name, value);
    }
    PluginSDK::PluginVersion getVersion() const override { return {1, 2, 3, 4}; }
    const wchar_t* getName() const override { return L"Fake"; }
    PluginSDK::UnknownSoftwareRepository* getUnknownSoftware() override {
        return new Repository(unknown, unknownNeverEnds, liveIterators);
    }
    TErrorCode initializePlugin() override {
        addExpression(L"Info");
        return addExpression(L"Keys");
    }
    TErrorCode cleanupPlugin() override { return 0; }
    TErrorCode createExpression(const wchar_t* name, PluginSDK::Expression** out) override {
        std::wstring n = name;
        *out = n == L"Info"   ? static_cast<PluginSDK::Expression*>(new Info)
               : n == L"Keys" ? new Keys
                              : nullptr;
        liveExpressions += *out != nullptr;
        return *out != nullptr ? 0 : -10008;
    }
    TErrorCode destroyExpression(PluginSDK::Expression* expression) override {
        liveExpressions -= expression != nullptr;
        delete expression;
        return 0;
    }
};

}  // namespace fake

#endif
