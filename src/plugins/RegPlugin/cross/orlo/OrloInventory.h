// Finds Orlo tag files under candidate installation directories and reads them.
//
// Each candidate directory's "properties/version" sub-directory is listed (no
// recursion, no name filter) and every entry that is a regular file is parsed as
// a tag file (OrloXmlParser). Stateless; everything is reported through the trace
// only, never to the caller.
#ifndef REGPLUGIN_CROSS_ORLO_ORLOINVENTORY_H
#define REGPLUGIN_CROSS_ORLO_ORLOINVENTORY_H

#include <string>
#include <vector>

#include "cross/orlo/OrloProduct.h"

namespace RegPlugin {

// The tag directory below an installation directory.
extern const wchar_t* const ORLO_TAG_DIR;

class OrloInventory {
  public:
    // Scans "properties/version" under each of `paths`, in order, and appends the
    // records found to `products`, each with its installation root set to the
    // candidate path exactly as given. Candidates without a tag directory are
    // skipped.
    void scanPaths(const std::vector<std::wstring>& paths, std::vector<OrloProduct>& products);
    // Parses every entry of the tag directory `dir`; appends the records to
    // `products`. True when at least one file gave a record.
    bool scanDirectory(const wchar_t* dir, std::vector<OrloProduct>& products);
    // Parses `file` when it is a regular file; appends its records to `products`.
    // True when it gave at least one.
    bool scanFile(const wchar_t* file, std::vector<OrloProduct>& products);
};

}  // namespace RegPlugin

#endif
