#include "Evaluation.h"

#include <memory>

#include "PluginSDK/ScalarExpression.h"
#include "PluginSDK/String.h"
#include "PluginSDK/StringVector.h"
#include "PluginSDK/UnknownSoftwareRepository.h"
#include "PluginSDK/VectorExpression.h"
#include "base/Utf8.h"

namespace regscan {

namespace {

std::string toUtf8(const wchar_t* text) {
    return Utf8::encode(text);
}

std::wstring toWide(const std::string& text) {
    return Utf8::decode(text.data(), text.size());
}

// Pre-filled into each getter's string. A lone high surrogate never comes out of
// decoding text (undecodable bytes become U+DC80..U+DCFF), so no real value equals it.
const wchar_t kUnsetMarker[] = L"\xD800regscan:unset\xD800";

// Calls one getter on a string pre-filled with the marker; empty when the getter
// left it unchanged or failed.
std::optional<std::string> fetch(
    PluginSDK::UnknownSoftwareRepository& iterator,
    TErrorCode (PluginSDK::UnknownSoftwareRepository::*getter)(PluginSDK::String*)) {
    PluginSDK::String value(kUnsetMarker);
    TErrorCode code = (iterator.*getter)(&value);
    if (code != 0 || value == kUnsetMarker) {
        return std::nullopt;
    }
    return toUtf8(value);
}

struct IteratorDeleter {
    void operator()(PluginSDK::UnknownSoftwareRepository* iterator) const { delete iterator; }
};

}  // namespace

ExpressionHandle::ExpressionHandle(PluginSDK::Plugin& plugin, const std::string& name)
    : m_plugin(plugin) {
    std::wstring wideName = toWide(name);
    PluginSDK::Expression* expression = nullptr;
    m_createCode = m_plugin.createExpression(wideName.c_str(), &expression);
    // After a failed creation the pointer is not ours to use, even if it was set.
    if (m_createCode == 0) {
        m_expression = expression;
    }
}

ExpressionHandle::~ExpressionHandle() {
    if (m_expression == nullptr) {
        return;
    }
    if (auto* scalar = dynamic_cast<PluginSDK::ScalarExpression*>(m_expression)) {
        scalar->disposeExpression();
    } else if (auto* vector = dynamic_cast<PluginSDK::VectorExpression*>(m_expression)) {
        vector->disposeExpression();
    }
    m_plugin.destroyExpression(m_expression);
}

void ExpressionHandle::setProperty(const std::string& name, const std::string& value) {
    if (m_expression != nullptr) {
        m_expression->setProperty(toWide(name).c_str(), toWide(value).c_str());
    }
}

void ExpressionHandle::removeProperty(const std::string& name) {
    if (m_expression != nullptr) {
        m_expression->setProperty(toWide(name).c_str(), nullptr);
    }
}

Evaluation ExpressionHandle::evaluate() {
    Evaluation evaluation;
    if (m_expression == nullptr) {
        evaluation.kind = Evaluation::Kind::NotCreated;
        evaluation.code = m_createCode;
        return evaluation;
    }
    auto* scalar = dynamic_cast<PluginSDK::ScalarExpression*>(m_expression);
    auto* vector = dynamic_cast<PluginSDK::VectorExpression*>(m_expression);
    if (scalar != nullptr && scalar->getType() == PluginSDK::EXPRESSION_TYPE_SCALAR) {
        PluginSDK::String result;
        evaluation.kind = Evaluation::Kind::Scalar;
        evaluation.code = scalar->getScalarResult(result);
        evaluation.scalar = toUtf8(result);
    } else if (vector != nullptr && vector->getType() == PluginSDK::EXPRESSION_TYPE_VECTOR) {
        PluginSDK::StringVector result;
        evaluation.kind = Evaluation::Kind::Vector;
        evaluation.code = vector->getVectorResult(result);
        evaluation.keys.reserve(static_cast<std::size_t>(result.size()));
        for (const PluginSDK::String& key : result) {
            evaluation.keys.push_back(toUtf8(key));
        }
    } else {
        evaluation.kind = Evaluation::Kind::Unsupported;
    }
    return evaluation;
}

Evaluation evaluateExpression(PluginSDK::Plugin& plugin, const std::string& name,
                              const PropertyList& properties) {
    ExpressionHandle expression(plugin, name);
    for (const auto& property : properties) {
        expression.setProperty(property.first, property.second);
    }
    return expression.evaluate();
}

UnknownListing listUnknownSoftware(PluginSDK::Plugin& plugin) {
    typedef PluginSDK::UnknownSoftwareRepository Repository;
    UnknownListing listing;
    std::unique_ptr<Repository, IteratorDeleter> iterator(plugin.getUnknownSoftware());
    if (!iterator) {
        return listing;
    }
    listing.available = true;
    listing.initCode = iterator->init();

    int size = iterator->getSize();
    long long bound = (size > 0 ? static_cast<long long>(size) : 0) + 1;
    bool ended = false;
    for (long long position = 0; position < bound; ++position) {
        UnknownPackage package;
        package.provider = fetch(*iterator, &Repository::getProvider);
        package.vendor = fetch(*iterator, &Repository::getVendor);
        package.name = fetch(*iterator, &Repository::getName);
        package.version = fetch(*iterator, &Repository::getVersion);
        package.installDir = fetch(*iterator, &Repository::getInstallDir);
        if (package.provider) {
            listing.packages.push_back(std::move(package));
        }
        TErrorCode next = iterator->getNext();
        if (next == PluginSDK::ERROR_NO_MORE_ITEMS) {
            ended = true;
            break;
        }
        if (next != 0) {
            listing.nextCode = next;
            break;
        }
    }
    listing.truncated = !ended;
    listing.size = iterator->getSize();
    return listing;
}

}  // namespace regscan
