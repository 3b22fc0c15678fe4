#include "Batch.h"

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <stdexcept>

#include "Evaluation.h"
#include "Options.h"
#include "base/Utf8.h"

namespace regscan {

namespace {

typedef nlohmann::ordered_json Json;

// A request that cannot be served; what() is the text of the error reply.
class BadRequest : public std::runtime_error {
  public:
    explicit BadRequest(const std::string& message) : std::runtime_error(message) {}
};

std::string dump(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

// Texts go to the plug-in as NUL-terminated wide strings: an embedded NUL would
// silently cut them, so it is refused.
const std::string& checkedText(const Json& value, const std::string& what) {
    if (!value.is_string()) {
        throw BadRequest(what + " must be a string");
    }
    const std::string& text = value.get_ref<const std::string&>();
    if (text.find('\0') != std::string::npos) {
        throw BadRequest(what + " must not contain NUL characters");
    }
    return text;
}

void checkMembers(const Json& request, const char* kind,
                  std::initializer_list<const char*> allowed) {
    for (const auto& member : request.items()) {
        bool known = false;
        for (const char* name : allowed) {
            known = known || member.key() == name;
        }
        if (!known) {
            throw BadRequest("unexpected member \"" + member.key() + "\" in " + kind + " request");
        }
    }
}

void checkTrue(const Json& value, const char* kind) {
    if (!value.is_boolean() || !value.get<bool>()) {
        throw BadRequest(std::string("\"") + kind + "\" must be true");
    }
}

PropertyList textPairs(const Json& object, const std::string& what) {
    if (!object.is_object()) {
        throw BadRequest("\"" + what + "\" must be an object of strings");
    }
    PropertyList pairs;
    for (const auto& member : object.items()) {
        if (member.key().find('\0') != std::string::npos) {
            throw BadRequest("a name in \"" + what + "\" must not contain NUL characters");
        }
        pairs.emplace_back(
            member.key(), checkedText(member.value(),
                                      "the value of \"" + member.key() + "\" in \"" + what + "\""));
    }
    return pairs;
}

}  // namespace

std::string BatchSession::handle(const std::string& line, bool& bad) {
    bad = false;
    try {
        if (line.find_first_not_of(" \t\r\n") == std::string::npos) {
            throw BadRequest("empty line");
        }
        Json request = Json::parse(line, nullptr, false);
        if (request.is_discarded()) {
            // Parse again for the message; the first pass avoids the exception in the
            // common case of a good line.
            try {
                request = Json::parse(line);
            } catch (const Json::parse_error& e) {
                throw BadRequest(std::string("not JSON: ") + e.what());
            }
        }
        if (!request.is_object()) {
            throw BadRequest("a request must be a JSON object");
        }
        int kinds = 0;
        for (const char* kind : {"expression", "config", "names", "unknown"}) {
            kinds += request.contains(kind) ? 1 : 0;
        }
        if (kinds != 1) {
            throw BadRequest(kinds == 0
                                 ? "unknown request kind: expected \"expression\", \"config\", "
                                   "\"names\" or \"unknown\""
                                 : "a request has exactly one of \"expression\", \"config\", "
                                   "\"names\" and \"unknown\"");
        }

        Json reply = Json::object();
        if (request.contains("expression")) {
            checkMembers(request, "an expression", {"expression", "properties"});
            const std::string& name = checkedText(request["expression"], "\"expression\"");
            PropertyList properties;
            if (request.contains("properties")) {
                properties = textPairs(request["properties"], "properties");
            }
            Evaluation evaluation = evaluateExpression(m_plugin, name, properties);
            switch (evaluation.kind) {
                case Evaluation::Kind::NotCreated:
                    reply["code"] = evaluation.code;
                    reply["result"] = nullptr;
                    break;
                case Evaluation::Kind::Scalar:
                    reply["code"] = evaluation.code;
                    reply["result"] = evaluation.scalar;
                    break;
                case Evaluation::Kind::Vector:
                    reply["code"] = evaluation.code;
                    reply["result"] = evaluation.keys;
                    break;
                case Evaluation::Kind::Unsupported:
                    throw BadRequest("expression " + name + " is neither scalar nor vector");
            }
        } else if (request.contains("config")) {
            checkMembers(request, "a config", {"config"});
            for (const auto& setting : textPairs(request["config"], "config")) {
                std::wstring name = Utf8::decode(setting.first.data(), setting.first.size());
                std::wstring value = Utf8::decode(setting.second.data(), setting.second.size());
                m_plugin.setProperty(name.c_str(), value.c_str());
            }
            reply["code"] = 0;
        } else if (request.contains("names")) {
            checkMembers(request, "a names", {"names"});
            checkTrue(request["names"], "names");
            reply["code"] = m_plugin.initializePlugin();
            Json names = Json::array();
            for (const std::wstring& name : m_plugin.getExpressionNames()) {
                names.push_back(Utf8::encode(name.data(), name.size()));
            }
            reply["names"] = std::move(names);
        } else {
            checkMembers(request, "an unknown", {"unknown"});
            checkTrue(request["unknown"], "unknown");
            UnknownListing listing = listUnknownSoftware(m_plugin);
            if (!listing.available) {
                throw BadRequest("the plug-in gave no unknown-software iterator");
            }
            reply["code"] = listing.initCode;
            reply["size"] = listing.size;
            Json packages = Json::array();
            for (const UnknownPackage& package : listing.packages) {
                Json entry = Json::object();
                const std::pair<const char*, const std::optional<std::string>*> fields[] = {
                    {"provider", &package.provider},
                    {"vendor", &package.vendor},
                    {"name", &package.name},
                    {"version", &package.version},
                    {"installDir", &package.installDir},
                };
                for (const auto& field : fields) {
                    if (*field.second) {
                        entry[field.first] = **field.second;
                    }
                }
                packages.push_back(std::move(entry));
            }
            reply["packages"] = std::move(packages);
            if (listing.truncated) {
                reply["truncated"] = true;
            }
        }
        return dump(reply);
    } catch (const BadRequest& e) {
        bad = true;
        return dump(Json{{"error", e.what()}});
    } catch (const std::exception& e) {
        bad = true;
        return dump(Json{{"error", std::string("cannot serve the request: ") + e.what()}});
    }
}

int BatchSession::run(std::istream& in, std::ostream& out) {
    bool anyBad = false;
    std::string line;
    while (std::getline(in, line)) {
        bool bad = false;
        std::string reply = handle(line, bad);
        anyBad = anyBad || bad;
        out << reply << '\n' << std::flush;
    }
    return anyBad ? EXIT_STATUS_BAD_REQUEST : EXIT_STATUS_OK;
}

}  // namespace regscan
