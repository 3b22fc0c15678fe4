// The Orlo tag-file parser on an arbitrary tag file: the XML reader, then the walk
// of its root and children into product records.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "cross/orlo/OrloXmlParser.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::traceEverythingToNowhere();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    static fuzz::MemoryFile file;
    static const std::wstring path = file.widePath();
    file.write(data, size);
    std::vector<RegPlugin::OrloProduct> products;
    RegPlugin::OrloXmlParser::parse(path.c_str(), products);
    return 0;
}
