// Receives the lines of a command's output one at a time (TesselHandler).
#ifndef REGPLUGIN_CROSS_TESSEL_TESSELLINESINK_H
#define REGPLUGIN_CROSS_TESSEL_TESSELLINESINK_H

#include <cstddef>

namespace RegPlugin {

class TesselLineSink {
  public:
    virtual ~TesselLineSink();
    // One non-empty line of `length` characters at `text`, without its line end. The
    // text is not NUL-terminated (it may hold NUL characters) and is valid only
    // during the call.
    virtual void onLine(const wchar_t* text, std::size_t length) = 0;
};

}  // namespace RegPlugin

#endif
