// A trace scope for one function and the lines written in it.
//
//     Trace trace(Tracer::getInstance(Tracer::COMPONENT_PLUGIN), "Foo::bar()");
//     trace.level = 1;
//     trace << trace.pos(__FILE__, __LINE__) << "cannot open " << path << Trace::Modifier(0);
//
// pos() starts a line; the line is written when the modifier ends it. When the
// level is filtered out, pos() marks the line inactive and every operator<< of it
// returns at once: nothing is formatted and nothing is allocated.
#ifndef HOSTSDK_TRACE_TRACE_H
#define HOSTSDK_TRACE_TRACE_H

#include <string>

#include "base/Export.h"
#include "base/String.h"
#include "trace/Tracer.h"

class HOSTSDK_API Trace {
  public:
    // Ends the current line; the value 0 is the plain line end.
    struct Modifier {
        explicit Modifier(int v = 0) : value(v) {}
        int value;
    };

    // Opens the scope of a function; `signature` must outlive the Trace (it is
    // normally a string literal).
    Trace(Tracer& tracer, const wchar_t* signature);
    Trace(Tracer& tracer, const char* signature);
    ~Trace();
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    // The level of the next line: 1 failure, 2 warning, 3 information (3 until set).
    // pos() filters on it.
    int level;

    // Starts a line at the source position; a line left unfinished is dropped.
    Trace& pos(const char* file, int line);
    bool isActive() const { return m_active; }

    Trace& operator<<(const String& text);
    Trace& operator<<(const char* text);     // UTF-8; null writes "(null)"
    Trace& operator<<(const wchar_t* text);  // null writes "(null)"
    Trace& operator<<(char c);               // the character itself, not its number
    Trace& operator<<(wchar_t c);            // the character, as UTF-8
    Trace& operator<<(int value);
    Trace& operator<<(long value);
    Trace& operator<<(unsigned int value);
    Trace& operator<<(unsigned long value);
    Trace& operator<<(long long value);
    Trace& operator<<(unsigned long long value);
    // The result of pos(): already recorded, writes nothing.
    Trace& operator<<(Trace& self);
    // Ends the line and writes it; any value ends the line. Without a started line
    // it does nothing.
    Trace& operator<<(const Modifier& modifier);

  private:
    Tracer* m_tracer;
    const char* m_signature;
    const wchar_t* m_wideSignature;
    const char* m_file;
    int m_line;
    bool m_active;
    std::string m_message;
};

#endif
