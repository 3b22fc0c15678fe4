// A scratch directory for one test, removed with everything in it at scope end.
#ifndef SDK_TESTS_TEMPDIR_H
#define SDK_TESTS_TEMPDIR_H

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

class TempDir {
  public:
    TempDir() {
        char pattern[] = "/tmp/sdktest.XXXXXX";
        char* real = ::mkdtemp(pattern) != nullptr ? ::realpath(pattern, nullptr) : nullptr;
        if (real == nullptr) {
            throw std::runtime_error("cannot make a scratch directory");
        }
        m_path = real;  // resolved, so that it compares with what children print
        std::free(real);
    }
    ~TempDir() { std::system(("rm -rf '" + m_path + "'").c_str()); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    // Writes `bytes` to `name` in the directory with `mode`; returns the file's path.
    std::string write(const std::string& name, const std::string& bytes, mode_t mode = 0644) const {
        const std::string file = m_path + "/" + name;
        std::ofstream(file, std::ios::binary) << bytes;
        ::chmod(file.c_str(), mode);
        return file;
    }

  private:
    std::string m_path;
};

#endif
