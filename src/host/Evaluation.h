// Evaluating the plug-in's expressions and walking its unknown-software iterator
// the way a host agent does. Texts on this side are UTF-8; they are converted to
// and from the plug-in's wide strings here (bytes that are not UTF-8 survive the
// round trip, see base/Utf8.h).
#ifndef REGSCAN_EVALUATION_H
#define REGSCAN_EVALUATION_H

#include <optional>
#include <string>
#include <vector>

#include "Options.h"
#include "PluginSDK/Expression.h"
#include "PluginSDK/Plugin.h"
#include "PluginSDK/Types.h"

namespace regscan {

struct Evaluation {
    enum class Kind {
        NotCreated,   // createExpression failed (`code` is its code) or gave no object
        Scalar,       // `scalar` holds the result
        Vector,       // `keys` holds the result (what was appended before a failure too)
        Unsupported,  // neither a scalar nor a vector expression; `code` is 0
    };
    Kind kind = Kind::NotCreated;
    TErrorCode code = 0;
    std::string scalar;
    std::vector<std::string> keys;
};

// One expression created by the plug-in, owned from createExpression until this
// handle is destroyed, when it is disposed and handed to destroyExpression. The
// plug-in must outlive the handle.
class ExpressionHandle {
  public:
    ExpressionHandle(PluginSDK::Plugin& plugin, const std::string& name);
    ~ExpressionHandle();
    ExpressionHandle(const ExpressionHandle&) = delete;
    ExpressionHandle& operator=(const ExpressionHandle&) = delete;

    bool created() const { return m_expression != nullptr; }
    // The code of createExpression; 0 with created() false when it succeeded but
    // handed out no object.
    TErrorCode createCode() const { return m_createCode; }
    // Sets one property, replacing an earlier value; ignored when nothing was created.
    void setProperty(const std::string& name, const std::string& value);
    // Removes one property; ignored when nothing was created.
    void removeProperty(const std::string& name);
    // Evaluates with the properties set so far, as a scalar or a vector by the
    // expression's kind. May be called again after changing properties.
    Evaluation evaluate();

  private:
    PluginSDK::Plugin& m_plugin;
    PluginSDK::Expression* m_expression = nullptr;
    TErrorCode m_createCode = 0;
};

// Creates `name`, sets `properties` in order, evaluates and destroys it.
Evaluation evaluateExpression(PluginSDK::Plugin& plugin, const std::string& name,
                              const PropertyList& properties);

// One position of the unknown-software iterator; a getter that left its string
// unchanged leaves its field empty (std::nullopt).
struct UnknownPackage {
    std::optional<std::string> provider;
    std::optional<std::string> vendor;
    std::optional<std::string> name;
    std::optional<std::string> version;
    std::optional<std::string> installDir;
};

struct UnknownListing {
    bool available = false;  // false: getUnknownSoftware gave no iterator
    TErrorCode initCode = 0;
    int size = 0;  // getSize() after the walk
    std::vector<UnknownPackage> packages;
    // The walk stopped at its bound (getSize() + 1 positions) before getNext
    // reported the end, or getNext failed with another code.
    bool truncated = false;
    TErrorCode nextCode = 0;  // getNext's last non-zero code other than the end
};

// Takes a new iterator, calls init(), then at each position the getters
// getProvider, getVendor, getName, getVersion, getInstallDir followed by getNext(),
// until getNext() gives ERROR_NO_MORE_ITEMS (or another non-zero code, or the
// bound is reached), and deletes the iterator. A position whose getProvider left
// the string unchanged gives no entry.
UnknownListing listUnknownSoftware(PluginSDK::Plugin& plugin);

}  // namespace regscan

#endif
