#include "trace/Trace.h"

#include <chrono>
#include <cwchar>

#include "base/Utf8.h"

namespace {

long long nowMicros() {
    using namespace std::chrono;
    return duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
}

const char kNull[] = "(null)";

}  // namespace

Trace::Trace(Tracer& tracer, const wchar_t* signature)
    : level(3),
      m_tracer(&tracer),
      m_signature(nullptr),
      m_wideSignature(signature),
      m_file(nullptr),
      m_line(0),
      m_active(false) {}

Trace::Trace(Tracer& tracer, const char* signature)
    : level(3),
      m_tracer(&tracer),
      m_signature(signature),
      m_wideSignature(nullptr),
      m_file(nullptr),
      m_line(0),
      m_active(false) {}

Trace::~Trace() = default;

Trace& Trace::pos(const char* file, int line) {
    m_active = Tracer::isEnabled(level);
    if (m_active) {
        m_file = file;
        m_line = line;
        m_message.clear();
    }
    return *this;
}

Trace& Trace::operator<<(const String& text) {
    if (m_active) {
        Utf8::encode(text.getWideString(), static_cast<std::size_t>(text.length()), m_message);
    }
    return *this;
}

Trace& Trace::operator<<(const char* text) {
    if (m_active) {
        m_message += text != nullptr ? text : kNull;
    }
    return *this;
}

Trace& Trace::operator<<(const wchar_t* text) {
    if (m_active) {
        if (text == nullptr) {
            m_message += kNull;
        } else {
            Utf8::encode(text, std::wcslen(text), m_message);
        }
    }
    return *this;
}

Trace& Trace::operator<<(char c) {
    if (m_active) {
        m_message += c;
    }
    return *this;
}

Trace& Trace::operator<<(wchar_t c) {
    if (m_active) {
        Utf8::encode(&c, 1, m_message);
    }
    return *this;
}

Trace& Trace::operator<<(int value) {
    if (m_active) {
        m_message += std::to_string(value);
    }
    return *this;
}

Trace& Trace::operator<<(long value) {
    if (m_active) {
        m_message += std::to_string(value);
    }
    return *this;
}

Trace& Trace::operator<<(unsigned int value) {
    if (m_active) {
        m_message += std::to_string(value);
    }
    return *this;
}

Trace& Trace::operator<<(unsigned long value) {
    if (m_active) {
        m_message += std::to_string(value);
    }
    return *this;
}

Trace& Trace::operator<<(long long value) {
    if (m_active) {
        m_message += std::to_string(value);
    }
    return *this;
}

Trace& Trace::operator<<(unsigned long long value) {
    if (m_active) {
        m_message += std::to_string(value);
    }
    return *this;
}

Trace& Trace::operator<<(Trace& /*self*/) {
    return *this;
}

Trace& Trace::operator<<(const Modifier& /*modifier*/) {
    if (!m_active) {
        return *this;
    }
    m_active = false;
    std::string wideSignature;
    if (m_signature == nullptr && m_wideSignature != nullptr) {
        wideSignature = Utf8::encode(m_wideSignature);
    }
    TraceRecord record;
    record.timeMicros = nowMicros();
    record.level = level;
    record.component = static_cast<int>(m_tracer->getComponent());
    record.signature = m_signature != nullptr ? m_signature : wideSignature.c_str();
    record.file = m_file;
    record.line = m_line;
    record.message = &m_message;
    Tracer::emit(record);
    m_message.clear();
    return *this;
}
