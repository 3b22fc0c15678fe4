#include "RootView.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <pwd.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "trace/Trace.h"
#include "trace/Tracer.h"

namespace regscan {

namespace {

// Where the view is put together before it becomes the root: a tmpfs mounted over
// the first of these directories that exists (in the private namespace only).
const char* const kStagingCandidates[] = {"/tmp", "/mnt", "/var/tmp", "/run"};

// Top-level directories that come from this machine, never from the root.
const char* const kSystemEntries[] = {"usr", "bin", "sbin", "lib", "lib32", "lib64", "libx32"};
// Top-level entries of the root that are not shown (the view has its own or none).
const char* const kHiddenEntries[] = {"dev", "proc", "sys", "run", "tmp"};
const char* const kDevices[] = {"null", "zero", "full", "random", "urandom"};

// The root's files that would make this machine's programs load or run the root's
// code, or read the root's rpm configuration (rpm macros can run commands).
const char* const kMaskedFiles[] = {"/etc/ld.so.preload", "/etc/rpmrc", "/etc/popt"};
const char* const kMaskedDirectories[] = {"/etc/rpm", "/etc/popt.d"};

// The registry files at fixed places, checked for being regular files. The ISMP
// registry's place depends on root's home directory, found in the root's passwd.
const char* const kRegistryFiles[] = {"/var/lib/dpkg/status", "/var/.com.zerog.registry.xml",
                                      "/etc/.kelvo/registry/Corvu.dat"};

// Inside the view.
const char kPrivate[] = "/run/regscan";
const char kEmptyFile[] = "/run/regscan/empty";
const char kEmptyDirectory[] = "/run/regscan/emptydir";
const char kLoaderCache[] = "/run/regscan/ld.so.cache";
const char kHome[] = "/run/regscan/home";
const char kRpmDatabase[] = "/run/regscan/rpmdb";

class ViewError : public std::runtime_error {
  public:
    explicit ViewError(const std::string& message) : std::runtime_error(message) {}
};

std::string errnoText(int error) {
    return std::strerror(error);
}

[[noreturn]] void fail(const std::string& what, int error) {
    throw ViewError(what + ": " + errnoText(error));
}

// A descriptor closed on scope exit.
struct Fd {
    int fd = -1;
    explicit Fd(int f = -1) : fd(f) {}
    ~Fd() {
        if (fd >= 0) {
            ::close(fd);
        }
    }
    Fd(const Fd&) = delete;
    Fd& operator=(const Fd&) = delete;
    std::string path() const { return "/proc/self/fd/" + std::to_string(fd); }
};

void traceLine(int level, const std::string& message) {
    Trace trace(Tracer::getInstance(Tracer::COMPONENT_HOST), "regscan::enterRoot()");
    trace.level = level;
    trace << trace.pos(__FILE__, __LINE__) << message.c_str() << Trace::Modifier(0);
}

void mountOrFail(const std::string& source, const std::string& target, const char* type,
                 unsigned long flags, const char* data = nullptr) {
    if (::mount(source.c_str(), target.c_str(), type, flags, data) != 0) {
        fail("cannot mount " + target, errno);
    }
}

// Binds `source` (a path, often /proc/self/fd/N) at `target`, read-only.
void bindReadOnly(const std::string& source, const std::string& target) {
    mountOrFail(source, target, nullptr, MS_BIND | MS_REC);
    // Read-only is a safety net; a mount whose flags are locked keeps its own.
    ::mount(nullptr, target.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr);
}

void makeDirectory(const std::string& path) {
    if (::mkdir(path.c_str(), 0755) != 0 && errno != EEXIST) {
        fail("cannot make " + path, errno);
    }
}

void makeFile(const std::string& path) {
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        fail("cannot make " + path, errno);
    }
    ::close(fd);
}

void writeFile(const std::string& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    if (!file.flush()) {
        throw ViewError("cannot write " + path);
    }
}

// `relative` opened below `rootFd` as if `rootFd` were "/": links are resolved
// inside it and ".." stops at it. -1 with errno set when it cannot be opened.
int openInRoot(int rootFd, const char* relative, int flags) {
    struct open_how how;
    std::memset(&how, 0, sizeof how);
    how.flags = static_cast<unsigned long long>(flags) | O_CLOEXEC;
    how.resolve = RESOLVE_IN_ROOT | RESOLVE_NO_MAGICLINKS;
    return static_cast<int>(::syscall(SYS_openat2, rootFd, relative, &how, sizeof how));
}

bool contains(const char* const* begin, const char* const* end, const std::string& name) {
    for (const char* const* p = begin; p != end; ++p) {
        if (name == *p) {
            return true;
        }
    }
    return false;
}

// The checks of the directory given with --root; returns its absolute form.
std::string checkedRoot(const std::string& rootDir) {
    char resolved[PATH_MAX];
    if (::realpath(rootDir.c_str(), resolved) == nullptr) {
        throw ViewError(errnoText(errno));
    }
    struct stat info;
    if (::stat(resolved, &info) != 0) {
        throw ViewError(errnoText(errno));
    }
    if (!S_ISDIR(info.st_mode)) {
        throw ViewError("not a directory");
    }
    if (std::string(resolved) == "/") {
        throw ViewError("this is the machine's own root; run without --root");
    }
    if (::access(resolved, R_OK | X_OK) != 0) {
        throw ViewError("cannot be read: " + errnoText(errno));
    }
    return resolved;
}

void writeIdMap(const char* file, const std::string& content) {
    int fd = ::open(file, O_WRONLY | O_CLOEXEC);
    if (fd < 0) {
        fail(std::string("cannot open ") + file, errno);
    }
    ssize_t written = ::write(fd, content.data(), content.size());
    int error = errno;
    ::close(fd);
    if (written != static_cast<ssize_t>(content.size())) {
        fail(std::string("cannot write ") + file, error);
    }
}

// A private mount namespace; for a normal user inside a new user namespace where
// the user is root.
void enterNamespace() {
    if (::geteuid() == 0) {
        if (::unshare(CLONE_NEWNS) != 0) {
            fail("cannot make a private mount namespace", errno);
        }
    } else {
        uid_t uid = ::geteuid();
        gid_t gid = ::getegid();
        if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
            int error = errno;
            throw ViewError("cannot make a user namespace (" + errnoText(error) +
                            "): this kernel does not let a normal user make one; run "
                            "regscan --root as root");
        }
        writeIdMap("/proc/self/setgroups", "deny");
        writeIdMap("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1");
        writeIdMap("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1");
    }
    mountOrFail("none", "/", nullptr, MS_REC | MS_PRIVATE);
}

// Shows the root's top-level entries in the view at `view`.
void addRootEntries(int rootFd, const std::string& view, std::vector<std::string>& hidden) {
    int listFd = ::openat(rootFd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* dir = listFd >= 0 ? ::fdopendir(listFd) : nullptr;
    if (dir == nullptr) {
        if (listFd >= 0) {
            ::close(listFd);
        }
        fail("cannot list the root", errno);
    }
    std::vector<std::string> names;
    while (struct dirent* entry = ::readdir(dir)) {
        std::string name = entry->d_name;
        if (name != "." && name != "..") {
            names.push_back(name);
        }
    }
    ::closedir(dir);

    for (const std::string& name : names) {
        if (contains(std::begin(kSystemEntries), std::end(kSystemEntries), name) ||
            contains(std::begin(kHiddenEntries), std::end(kHiddenEntries), name)) {
            hidden.push_back("/" + name);
            continue;
        }
        struct stat info;
        if (::fstatat(rootFd, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
            continue;
        }
        const std::string target = view + "/" + name;
        if (S_ISLNK(info.st_mode)) {
            // Copied, so that it resolves inside the view.
            std::vector<char> link(static_cast<std::size_t>(PATH_MAX) + 1);
            ssize_t length = ::readlinkat(rootFd, name.c_str(), link.data(), PATH_MAX);
            if (length >= 0 &&
                ::symlink(std::string(link.data(), static_cast<std::size_t>(length)).c_str(),
                          target.c_str()) != 0) {
                fail("cannot make " + target, errno);
            }
        } else if (S_ISDIR(info.st_mode) || S_ISREG(info.st_mode)) {
            // Opened without following links, so a swapped-in link is never followed.
            Fd entry(::openat(rootFd, name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
            if (entry.fd < 0) {
                continue;
            }
            if (S_ISDIR(info.st_mode)) {
                makeDirectory(target);
            } else {
                makeFile(target);
            }
            bindReadOnly(entry.path(), target);
        }
    }
}

// This machine's system directories and devices in the view.
void addSystemEntries(const std::string& view) {
    for (const char* name : kSystemEntries) {
        const std::string source = std::string("/") + name;
        const std::string target = view + source;
        struct stat info;
        if (::lstat(source.c_str(), &info) != 0) {
            continue;
        }
        if (S_ISLNK(info.st_mode)) {
            std::vector<char> link(static_cast<std::size_t>(PATH_MAX) + 1);
            ssize_t length = ::readlink(source.c_str(), link.data(), PATH_MAX);
            if (length < 0 ||
                ::symlink(std::string(link.data(), static_cast<std::size_t>(length)).c_str(),
                          target.c_str()) != 0) {
                fail("cannot make " + target, errno);
            }
        } else if (S_ISDIR(info.st_mode)) {
            makeDirectory(target);
            bindReadOnly(source, target);
        }
    }
    makeDirectory(view + "/dev");
    for (const char* name : kDevices) {
        const std::string source = std::string("/dev/") + name;
        if (::access(source.c_str(), F_OK) == 0) {
            makeFile(view + source);
            mountOrFail(source, view + source, nullptr, MS_BIND);
        }
    }
    makeDirectory(view + "/tmp");
    ::chmod((view + "/tmp").c_str(), 01777);
}

// The root's rpm database bound at kRpmDatabase; false when the root has none.
bool addRpmDatabase(int rootFd, const std::string& view) {
    for (const char* candidate : {"var/lib/rpm", "usr/lib/sysimage/rpm"}) {
        Fd database(openInRoot(rootFd, candidate, O_PATH | O_DIRECTORY));
        if (database.fd < 0) {
            continue;
        }
        makeDirectory(view + kRpmDatabase);
        // Not read-only: rpm's database library may need to create its lock and
        // shared-memory files even to read.
        mountOrFail(database.path(), view + kRpmDatabase, nullptr, MS_BIND);
        return true;
    }
    return false;
}

// Replaces the process's root with `view`.
void switchRoot(const std::string& view) {
    if (::chdir(view.c_str()) != 0) {
        fail("cannot enter " + view, errno);
    }
    if (::syscall(SYS_pivot_root, ".", ".") == 0) {
        // The old root now lies over the new one; detach it so nothing of this
        // machine stays reachable but what was bound into the view.
        if (::umount2(".", MNT_DETACH) != 0) {
            fail("cannot detach the machine's root", errno);
        }
    } else if (::chroot(".") != 0) {
        fail("cannot change the root", errno);
    }
    if (::chdir("/") != 0) {
        fail("cannot enter the new root", errno);
    }
}

// Inside the view: masks the root's loader and rpm configuration.
void maskConfiguration(bool haveLoaderCache) {
    struct stat info;
    for (const char* path : kMaskedFiles) {
        if (::stat(path, &info) == 0) {
            mountOrFail(kEmptyFile, path, nullptr, MS_BIND);
        }
    }
    for (const char* path : kMaskedDirectories) {
        if (::stat(path, &info) == 0) {
            mountOrFail(S_ISDIR(info.st_mode) ? kEmptyDirectory : kEmptyFile, path, nullptr,
                        MS_BIND);
        }
    }
    // The root's cache could name the root's libraries for this machine's programs.
    if (::stat("/etc/ld.so.cache", &info) == 0) {
        mountOrFail(haveLoaderCache ? kLoaderCache : kEmptyFile, "/etc/ld.so.cache", nullptr,
                    MS_BIND);
    }
}

// Inside the view: a registry file that is not a regular file would block or fail
// the reading; it reads as empty instead.
void neutraliseSpecialFiles(std::ostream& err) {
    std::vector<std::string> paths(std::begin(kRegistryFiles), std::end(kRegistryFiles));
    if (const struct passwd* root = ::getpwnam("root")) {
        std::string home = root->pw_dir != nullptr ? root->pw_dir : "";
        if (home.empty() || home.back() != '/') {
            home += '/';
        }
        paths.push_back(home + "vpd.properties");
    }
    for (const std::string& path : paths) {
        struct stat info;
        if (::stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) {
            mountOrFail(kEmptyFile, path, nullptr, MS_BIND);
            err << "regscan: --root: " << path << " is not a regular file; read as empty\n";
            traceLine(2, "--root: " + path + " is not a regular file; read as empty");
        }
    }
}

// The environment of the plug-in and of the programs it runs.
void setEnvironment() {
    for (const char* name : {"LD_PRELOAD", "LD_LIBRARY_PATH", "LD_AUDIT", "LOCPATH", "GCONV_PATH",
                             "TMPDIR", "RPM_CONFIGDIR", "POPT_CONFIG", "HOSTSDK_TRACE_FILE"}) {
        ::unsetenv(name);
    }
    ::setenv("PATH", "/usr/bin:/bin:/usr/sbin:/sbin", 1);
    ::setenv("HOME", kHome, 1);
    // The Tessel listing command belongs to the root: a request that names a product
    // directory gets a command of this machine that fails instead.
    ::setenv("PDXCAT", "/bin/false", 1);
}

void buildView(const std::string& root, std::ostream& err) {
    // Opened in the new namespace: a mount can only be bound from the caller's own.
    enterNamespace();
    Fd rootFd(::open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (rootFd.fd < 0) {
        fail(root, errno);
    }
    Fd loaderCache(::open("/etc/ld.so.cache", O_RDONLY | O_CLOEXEC));
    std::string view;
    for (const char* candidate : kStagingCandidates) {
        struct stat info;
        if (::lstat(candidate, &info) == 0 && S_ISDIR(info.st_mode)) {
            view = candidate;
            break;
        }
    }
    if (view.empty()) {
        throw ViewError("no directory to put the view together in (/tmp, /mnt, ...)");
    }
    mountOrFail("tmpfs", view, "tmpfs", MS_NOSUID | MS_NODEV, "mode=0755");

    std::vector<std::string> hidden;
    addRootEntries(rootFd.fd, view, hidden);
    addSystemEntries(view);
    makeDirectory(view + "/run");
    makeDirectory(view + kPrivate);
    makeDirectory(view + kHome);
    makeDirectory(view + kEmptyDirectory);
    makeFile(view + kEmptyFile);
    if (loaderCache.fd >= 0) {
        makeFile(view + kLoaderCache);
        mountOrFail(loaderCache.path(), view + kLoaderCache, nullptr, MS_BIND);
    }
    bool haveRpmDatabase = addRpmDatabase(rootFd.fd, view);
    // Without a database in the root rpm is pointed at a place that does not exist,
    // and fails as it does on a machine without one.
    writeFile(view + kHome + "/.rpmmacros", std::string("%_dbpath ") + kRpmDatabase + "\n");

    switchRoot(view);
    maskConfiguration(loaderCache.fd >= 0);
    neutraliseSpecialFiles(err);
    setEnvironment();

    traceLine(
        3, "--root: reading the system at " + root + (haveRpmDatabase ? "" : " (no rpm database)"));
    std::string shadowed;
    for (const std::string& entry : hidden) {
        if (contains(std::begin(kSystemEntries), std::end(kSystemEntries), entry.substr(1))) {
            shadowed += (shadowed.empty() ? "" : ", ") + entry;
        }
    }
    // Said even when the root has none of them: an install directory that a registry
    // of the root reports under /usr is still searched in this machine's /usr.
    traceLine(2, "--root: /usr, /bin, /sbin and /lib* are this machine's own (for rpm)" +
                     (shadowed.empty() ? std::string()
                                       : "; " + shadowed + " of " + root + " are not read") +
                     "; install directories under them are searched in this machine's files");
}

}  // namespace

int enterRoot(const Options& options, std::ostream& err) {
    for (const auto& setting : options.settings) {
        if (setting.first == "pdxDirectory") {
            err << "regscan: --root: the Tessel catalog cannot be listed for a root: its listing "
                   "command belongs to the root and is never run (drop --set pdxDirectory)\n";
            return EXIT_STATUS_USAGE;
        }
    }
    try {
        buildView(checkedRoot(options.rootDir), err);
    } catch (const ViewError& e) {
        err << "regscan: --root " << options.rootDir << ": " << e.what() << '\n';
        return EXIT_STATUS_USAGE;
    }
    return 0;
}

}  // namespace regscan
