#include "cross/orlo/OrloInventory.h"

#include <utility>

#include "base/File.h"
#include "base/ObjectArray.h"
#include "base/String.h"
#include "common/PluginTrace.h"
#include "cross/orlo/OrloXmlParser.h"

namespace RegPlugin {

const wchar_t* const ORLO_TAG_DIR = L"properties/version";

void OrloInventory::scanPaths(const std::vector<std::wstring>& paths,
                              std::vector<OrloProduct>& products) {
    REG_TRACE_SCOPE("OrloInventory::scanPaths()");
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const String path(paths[i]);
        REG_TRACE(2, "Looking at path: ", path);
        const File tagDir(path, String(ORLO_TAG_DIR));
        const String& fullPath = tagDir.getPath();
        if (!tagDir.exists()) {
            REG_TRACE(2, "Path: ", fullPath, " not existing, skipping");
            continue;
        }
        if (!tagDir.isDirectory()) {
            REG_TRACE(2, "Path: ", fullPath, " is not directory, skipping");
            continue;
        }
        std::vector<OrloProduct> local;
        scanDirectory(fullPath.getWideString(), local);
        REG_TRACE(3, "Found ", static_cast<unsigned long>(local.size()), " products in ", fullPath);
        for (OrloProduct& product : local) {
            product.installRoot = paths[i];
            products.push_back(std::move(product));
        }
    }
}

bool OrloInventory::scanDirectory(const wchar_t* dir, std::vector<OrloProduct>& products) {
    REG_TRACE_SCOPE("OrloInventory::scanDirectory()");
    const File directory(dir);
    REG_TRACE(3, "Looking at dir: ", dir);
    ObjectArray<String> entries;
    if (directory.list(entries, File::LIST_ALL) != 0) {
        REG_TRACE(2, "Failed to list files for path: ", dir);
        return false;
    }
    if (entries.size() == 0) {
        REG_TRACE(2, "No files found in dir: ", dir);
        return false;
    }
    bool found = false;
    for (int i = 0; i < entries.size(); ++i) {
        const File entry(directory.getPath(), entries[i]);
        found = scanFile(entry.getPath().getWideString(), products) || found;
    }
    return found;
}

bool OrloInventory::scanFile(const wchar_t* file, std::vector<OrloProduct>& products) {
    REG_TRACE_SCOPE("OrloInventory::scanFile()");
    const File tagFile(file);
    const String& path = tagFile.getPath();
    REG_TRACE(3, "Looking at file: ", path);
    // A regular file, the common case, costs one look at the disk.
    if (!tagFile.isFile()) {
        if (!tagFile.exists()) {
            REG_TRACE(2, "The file does not exist: ", path, ", skipping");
        } else {
            REG_TRACE(2, "The file is not regular: ", path, ", skipping");
        }
        return false;
    }
    return OrloXmlParser::parse(path.getWideString(), products);
}

}  // namespace RegPlugin
