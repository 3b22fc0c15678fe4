// The floor of the InstallAnywhere load benchmark: the same file parsed by expat with
// empty callbacks, read in the same 64 KiB pieces as the host reader reads it.
// Prints the number of elements.
//
//     expat_floor FILE
#include <expat.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace {

void XMLCALL onStart(void* data, const XML_Char* /*name*/, const XML_Char** /*atts*/) {
    ++*static_cast<long*>(data);
}
void XMLCALL onEnd(void* /*data*/, const XML_Char* /*name*/) {}
void XMLCALL onText(void* /*data*/, const XML_Char* /*text*/, int /*length*/) {}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FILE\n", argv[0]);
        return 2;
    }
    const int fd = open(argv[1], O_RDONLY);
    if (fd < 0) {
        std::perror(argv[1]);
        return 1;
    }
    XML_Parser parser = XML_ParserCreate(nullptr);
    long elements = 0;
    XML_SetUserData(parser, &elements);
    XML_SetElementHandler(parser, onStart, onEnd);
    XML_SetCharacterDataHandler(parser, onText);
    for (;;) {
        void* buffer = XML_GetBuffer(parser, 64 * 1024);
        const ssize_t got = buffer != nullptr ? read(fd, buffer, 64 * 1024) : -1;
        if (got < 0 || XML_ParseBuffer(parser, static_cast<int>(got), got == 0) != XML_STATUS_OK) {
            std::fprintf(stderr, "%s: parse error\n", argv[1]);
            return 1;
        }
        if (got == 0) {
            break;
        }
    }
    XML_ParserFree(parser);
    close(fd);
    std::printf("%ld\n", elements);
    return 0;
}
