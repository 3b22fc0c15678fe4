// The catalog of the software-distribution product installed on the machine, listed
// once with the product's listing command "pdxcat -p" (run by TesselHandler in the
// directory of the "pdxDirectory" setting), and the state criteria that the Tessel
// expressions apply to its packages.
#ifndef REGPLUGIN_CROSS_TESSEL_TESSELDATAPROVIDER_H
#define REGPLUGIN_CROSS_TESSEL_TESSELDATAPROVIDER_H

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "PluginSDK/Configuration.h"
#include "base/ObjectArray.h"
#include "base/String.h"
#include "common/DeferredTraceLines.h"
#include "common/PreloadedDataProvider.h"
#include "cross/tessel/TesselHandler.h"
#include "cross/tessel/TesselPackage.h"

namespace RegPlugin {

class TesselDataProvider : public PreloadedDataProvider {
  public:
    // The message ids that tag the listing's name, version, uninstall-data and state
    // lines (the factory passes "PDXMS0164I", "PDXMS0165I", "PDXMS0804I",
    // "PDXMS0166I").
    TesselDataProvider(const String& nameId, const String& versionId, const String& uninstDataId,
                       const String& stateId);
    ~TesselDataProvider() override;

    // Reads "pdxDirectory" from the plug-in's configuration and lists the catalog
    // there. REG_PLUGIN_ERROR_PDX_CLI_UNSPECIFIED when the setting is missing,
    // otherwise loadInformation's result.
    TErrorCode load() override;

    // Runs "pdxcat -p" through `handler` and stores a package per record of its
    // output (as parseLines does). The output is read while the command runs, and
    // the trace lines of skipped records are written once it has ended. Returns 0,
    // -101 for a null handler, or the handler's error (nothing is stored then).
    TErrorCode loadInformation(TesselHandler* handler);

    // Turns listing lines into packages. A line that carries one of the four ids
    // sets that value of the current record; any other line ends the record (when
    // it has a value) and stores it with addPackage. Values are not reset between
    // records: a record without, say, a state line keeps the previous state.
    void parseLines(const ObjectArray<String>& lines);
    // The same for the raw output of the listing command (`size` bytes of UTF-8,
    // split as TesselHandler::splitLines splits it). The packages keep a copy of
    // the output, shared by all of them, and make their fields from it when asked.
    void parseListing(const char* data, std::size_t size);
    // The same, keeping `output` itself.
    void parseListing(ByteBuffer output);
    // The same, the output arriving in pieces as it does while the listing command
    // runs: the reader looks at the output each time it has grown to one of the
    // sizes `pieceEnds` (ascending, at most the output's size), then at the whole.
    void parseListing(ByteBuffer output, const std::vector<std::size_t>& pieceEnds);

    // 1 when `line` carries `id` and `value` was set to the value, else 0 (`value`
    // untouched). The line carries the id when its first nine characters equal the
    // id's first nine and a ':' follows at position 10 or later; the value is the
    // rest of the line from the second character after that ':' on, untrimmed (empty
    // when the line ends before).
    int matchResultLine(const String& id, const String& line, String& value);

    // Stores the package name "." version with its ten fields, the state from the
    // first five letters of `state` (missing letters count as 0). False, and nothing
    // stored, when the key is already there (the first record wins) or the package
    // cannot be made.
    bool addPackage(String& name, String& version, String& uninstData, String& state);

    // The show flags for one evaluation. Each comes from its override when that is
    // given ("true" or "false", the plug-in's own texts; anything else ends the
    // process through an assertion), else from the configuration property
    // "showUncommittedPackages" / "showRemovedPackages", which sets the flag only
    // when it holds the host's true text. The outputs are only ever set to true from
    // the configuration, so callers start them at false. A null configuration ends
    // the process; null outputs give -101. Returns 0.
    TErrorCode getProperties(PluginSDK::Configuration* configuration,
                             const wchar_t* showUncommittedOverride,
                             const wchar_t* showRemovedOverride, bool* showUncommitted,
                             bool* showRemoved);

    // Whether `package` passes the criteria: with both flags every package; else an
    // installed package when it is committed or uncommitted ones are shown, and a
    // removed (not installed) one when removed ones are shown. Returns 0, -101 for a
    // null `matches` (or a null package whose fields are needed), or the field
    // lookup's error (`*matches` untouched then).
    TErrorCode checkCriteria(RegistryPackage* package, bool* matches, bool showUncommitted,
                             bool showRemoved);

  private:
    class RecordReader;
    class ListingReader;
    using IndexPosition = std::map<PluginSDK::String, RegistryPackage*>::iterator;

    // addPackage on the texts themselves: a package with its fields stored.
    bool storePackage(const std::wstring& name, const std::wstring& version,
                      const std::wstring& uninstData, const std::wstring& state);
    // addPackage on texts of the listing at `data` (UTF-8): a package that makes
    // its fields from `listing`, holding the same bytes once the listing is
    // complete, when they are asked for. `last` is where the previous package of
    // the listing went into the index (see storeNew); the trace line of a record not
    // stored is held in `deferred`.
    bool storePackage(const char* data, const std::shared_ptr<const ByteBuffer>& listing,
                      const TesselPackage::Span& name, const TesselPackage::Span& version,
                      const TesselPackage::Span& uninstData, const TesselPackage::Span& state,
                      IndexPosition& last, DeferredTraceLines& deferred);
    // Stores the package `make(key)` makes under `keyText` unless the key is taken
    // (or `make` gives null), with addPackage's trace lines (held in `deferred`
    // instead, when given). With `last` (an entry of the index, or end()), the key
    // is first compared with the keys around it, so that a listing in key order
    // costs two comparisons a package instead of a search of the index; `last` then
    // moves to the new entry.
    template <typename Make>
    bool storeNew(const std::wstring& keyText, Make make, IndexPosition* last,
                  DeferredTraceLines* deferred);

    String m_NameId;
    String m_VersionId;
    String m_UninstDataId;
    String m_StateId;
    std::wstring m_keyText;  // scratch room for a key being made
};

}  // namespace RegPlugin

#endif
