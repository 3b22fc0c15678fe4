// The batch protocol: one JSON request object per input line, one JSON reply per
// line, in order, all against one plug-in object so that its state carries over.
//
// Requests and replies (all texts UTF-8):
//   {"expression": "NAME", "properties": {"P": "V", ...}}
//       -> {"code": C, "result": R}: R is the scalar text, an array of strings for
//          a vector expression, or null when createExpression failed (C is then its
//          code). Properties are set in object order; an absent one is not set, ""
//          sets the empty text. "properties" may be absent.
//   {"config": {"NAME": "VALUE", ...}}
//       -> each pair passed unchanged to the plug-in's setProperty, in order;
//          {"code": 0}
//   {"names": true}
//       -> {"code": C, "names": [...]}: C is initializePlugin's code, the names are
//          the announced ones in order
//   {"unknown": true}
//       -> {"code": C, "size": N, "packages": [{"provider": ..., "vendor": ...,
//          "name": ..., "version": ..., "installDir": ...}, ...]}: C is init's code,
//          N getSize(); a key whose getter left its string unchanged is left out;
//          "truncated": true is added when the iterator did not end in time
//   anything else (not JSON, not an object, no or several request kinds, unknown
//   members, wrong value types, texts with NUL characters, an empty line)
//       -> {"error": "what is wrong"}
#ifndef REGSCAN_BATCH_H
#define REGSCAN_BATCH_H

#include <istream>
#include <ostream>
#include <string>

#include "PluginSDK/Plugin.h"

namespace regscan {

class BatchSession {
  public:
    // `plugin` must outlive the session.
    explicit BatchSession(PluginSDK::Plugin& plugin) : m_plugin(plugin) {}

    // Answers one request line (without its line end). Returns the reply, one line
    // of JSON without line end; sets `bad` when the reply is an error reply.
    std::string handle(const std::string& line, bool& bad);

    // Answers every line of `in`, writing each reply followed by a line end and
    // flushing at once. Returns EXIT_STATUS_BAD_REQUEST when some line got an error
    // reply, else EXIT_STATUS_OK.
    int run(std::istream& in, std::ostream& out);

  private:
    PluginSDK::Plugin& m_plugin;
};

}  // namespace regscan

#endif
