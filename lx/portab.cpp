// portab.cpp - files for the engine, over the C library's streams and the
// POSIX calls for what streams can't do: file stamps, syncing, renaming,
// exclusive creation and advisory locks.
//
// State: none but the lock wait (a test hook) and a counter that makes
// temporary names unique within the process. Handles belong to their
// callers from open to close.
#include "portab.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform.h"
#include "safestr.h"

namespace {

int32_t gLockWaitMs = 10000;
uint32_t gTempCounter = 0;

const char *mode_text(int16_t mode) {
    switch (mode) {
    case PORT_MODE_READ: return "rb";
    case PORT_MODE_WRITE: return "wb";
    case PORT_MODE_UPDATE: return "w+b";
    case PORT_MODE_READ_TEXT: return "rb";
    case PORT_MODE_WRITE_TEXT: return "wb";
    default: return "r";
    }
}

PortFile *wrap_stream(FILE *fp) {
    auto *file = static_cast<PortFile *>(LX_MEM_ALLOC(sizeof(PortFile)));
    if (!file) {
        std::fclose(fp);
        return nullptr;
    }
    file->fp = fp;
    return file;
}

void stamp_from(const struct stat &st, PortStamp *stamp) {
    stamp->seconds = st.st_mtim.tv_sec;
    stamp->nanoseconds = static_cast<int32_t>(st.st_mtim.tv_nsec);
    stamp->size = st.st_size;
    stamp->device = st.st_dev;
    stamp->inode = st.st_ino;
    stamp->regular = S_ISREG(st.st_mode);
}

// Copies at most dstSize - 1 bytes; false if src didn't fit.
bool copy_fits(char *dst, size_t dstSize, const char *src) {
    size_t n = std::strlen(src);
    if (n >= dstSize) return false;
    std::memcpy(dst, src, n + 1);
    return true;
}

// The folder part of path ("." if it has none), into dir.
bool folder_of(const char *path, char *dir, size_t dirSize) {
    const char *slash = std::strrchr(path, '/');
    if (slash == nullptr) return copy_fits(dir, dirSize, ".");
    size_t n = slash == path ? 1 : static_cast<size_t>(slash - path);
    if (n >= dirSize) return false;
    std::memcpy(dir, path, n);
    dir[n] = '\0';
    return true;
}

// path, or the file a symbolic link at path leads to, into out.
bool target_of(const char *path, char *out, size_t outSize) {
    struct stat st;
    if (lstat(path, &st) == 0 && S_ISLNK(st.st_mode)) {
        char *real = realpath(path, nullptr);
        if (real != nullptr) {
            bool ok = copy_fits(out, outSize, real);
            std::free(real);
            return ok;
        }
        // A dangling link: the new file takes the place of the link.
    }
    return copy_fits(out, outSize, path);
}

// Makes a name in dir (no trailing slash wanted) from prefix, a part that
// is unique in time, process and call, and suffix, and checks that nothing
// has it. False if no free name fits in size bytes.
bool make_temp_name(const char *dir, const char *prefix, const char *suffix, char *name, size_t size) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        struct timespec now;
        clock_gettime(CLOCK_REALTIME, &now);
        unsigned long unique = static_cast<unsigned long>(now.tv_nsec) ^
                               (static_cast<unsigned long>(now.tv_sec) << 20) ^
                               (static_cast<unsigned long>(++gTempCounter) * 2654435761ul);
        int n = std::snprintf(name, size, "%s%s%s%ld.%lx%s", dir, dir[0] && dir[std::strlen(dir) - 1] != '/' ? "/" : "",
                              prefix ? prefix : "", static_cast<long>(getpid()), unique & 0xFFFFFFul,
                              suffix ? suffix : "");
        if (n < 0 || static_cast<size_t>(n) >= size) break;
        struct stat st;
        if (lstat(name, &st) != 0 && errno == ENOENT) return true;
    }
    if (size > 0) name[0] = '\0';
    return false;
}

// Syncs the folder of path, so that a rename in it lasts. Failures are
// ignored: the rename itself has happened either way.
void sync_folder(const char *path) {
    char dir[4096];
    if (!folder_of(path, dir, sizeof dir)) return;
    int fd = open(dir, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    fsync(fd);
    close(fd);
}

} // namespace

PortFile *PORT_OpenFile(const char *path, int16_t mode) {
    LX_ASSERT(path != NULL);
    FILE *fp = std::fopen(path, mode_text(mode));
    if (!fp) return nullptr;
    struct stat st;
    if (fstat(fileno(fp), &st) == 0 && S_ISDIR(st.st_mode)) {
        std::fclose(fp);
        return nullptr;
    }
    return wrap_stream(fp);
}

int16_t PORT_CloseFile(PortFile *file) {
    if (file == nullptr) return 0;
    if (file->fp) std::fclose(file->fp);
    LX_MEM_FREE(file);
    return 0;
}

int32_t PORT_FileTime(const char *path) {
    struct stat st;
    if (stat(path, &st) != 0) return 0;
    return static_cast<int32_t>(st.st_mtim.tv_sec);
}

int32_t PORT_Tell(PortFile *file) { return static_cast<int32_t>(std::ftell(file->fp)); }

int16_t PORT_Seek(PortFile *file, int32_t offset, int16_t whence) {
    return static_cast<int16_t>(std::fseek(file->fp, offset, whence) != 0);
}

uint32_t PORT_Read(PortFile *file, void *buffer, uint32_t count) {
    return static_cast<uint32_t>(std::fread(buffer, 1, count, file->fp));
}

uint32_t PORT_Write(PortFile *file, const void *buffer, uint32_t count) {
    return static_cast<uint32_t>(std::fwrite(buffer, 1, count, file->fp));
}

int32_t PORT_ReadAt(const char *path, int32_t offset, void *buffer, uint32_t count) {
    LX_ASSERT(path != NULL);
    LX_ASSERT(offset >= 0 && count <= INT32_MAX);
    const int fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) return -1;
    uint32_t got = 0;
    while (got < count) {
        const ssize_t n = pread(fd, static_cast<char *>(buffer) + got, count - got, static_cast<off_t>(offset) + got);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && errno == EISDIR) { // a folder opens, but isn't a file to read
            close(fd);
            return -1;
        }
        if (n <= 0) break;
        got += static_cast<uint32_t>(n);
    }
    close(fd);
    return static_cast<int32_t>(got);
}

int32_t PORT_ReadByte(PortFile *file) {
    int c = getc_unlocked(file->fp);
    return c == EOF ? -1 : c;
}

uint32_t PORT_WriteByte(PortFile *file, int32_t byte) {
    return putc_unlocked(static_cast<uchar>(byte), file->fp) == EOF ? 0u : 1u;
}

int16_t PORT_ReadLine(PortFile *file, char *buffer, int16_t size) {
    LX_ASSERT(buffer != NULL);
    if (size <= 0) return -1;
    int16_t stored = 0;
    bool afterCr = false; // the byte before was a CR that may start the line end
    for (;;) {
        if (stored == size - 1) break; // full: the rest of the line comes next time
        int32_t c = PORT_ReadByte(file);
        if (c <= 0) { // end of file, error, or a byte 0, which counts as the end
            buffer[stored] = '\0';
            return -1;
        }
        buffer[stored++] = static_cast<char>(c);
        if (afterCr && c == '\n') {
            stored -= 2;
            break;
        }
        // After a CR any byte but LF sets the match back; that byte is not
        // taken for a CR of its own, so CR CR LF ends no line.
        afterCr = !afterCr && c == '\r';
    }
    buffer[stored] = '\0';
    return stored;
}

int16_t PORT_WriteLine(PortFile *file, const char *text) {
    size_t len = std::strlen(text);
    if (len > 32765) return LX_ERR_FAILED; // the count must fit the result
    for (size_t i = 0; i < len; ++i)
        if (PORT_WriteByte(file, lx_byte(text[i])) == 0) return LX_ERR_FAILED;
    if (PORT_WriteByte(file, '\r') == 0 || PORT_WriteByte(file, '\n') == 0) return LX_ERR_FAILED;
    return static_cast<int16_t>(len + 2);
}

int16_t PORT_LockFile(const char *path) {
    char target[4096], lockPath[4096 + sizeof PORT_LOCK_SUFFIX];
    if (!target_of(path, target, sizeof target)) return LX_ERR_FAILED;
    std::snprintf(lockPath, sizeof lockPath, "%s%s", target, PORT_LOCK_SUFFIX);
    int fd = open(lockPath, O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (fd < 0) return LX_ERR_FAILED;
    if (fd > INT16_MAX) { // the token couldn't name it
        close(fd);
        return LX_ERR_FAILED;
    }
    // flock, not fcntl: a lock of fcntl belongs to the process and would
    // vanish when any other descriptor of the file in it is closed.
    struct timespec start, now;
    clock_gettime(CLOCK_MONOTONIC, &start);
    // Waiting by polling: a short pause, growing to 2 ms, with some jitter
    // so that waiters don't wake in step.
    long pauseUs = 100;
    while (flock(fd, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            close(fd);
            return LX_ERR_FAILED;
        }
        clock_gettime(CLOCK_MONOTONIC, &now);
        long waitedMs = (now.tv_sec - start.tv_sec) * 1000 + (now.tv_nsec - start.tv_nsec) / 1000000;
        if (waitedMs >= gLockWaitMs) {
            close(fd);
            return LX_ERR_FAILED;
        }
        usleep(static_cast<useconds_t>(pauseUs + (now.tv_nsec / 1000) % (pauseUs / 2 + 1)));
        if (pauseUs < 2000) pauseUs *= 2;
    }
    return static_cast<int16_t>(fd);
}

int16_t PORT_UnlockFile(int16_t token) {
    if (token >= 0) close(token); // closing the descriptor releases the lock
    return 0;
}

int32_t PORT_SetLockWait(int32_t milliseconds) {
    int32_t old = gLockWaitMs;
    gLockWaitMs = milliseconds;
    return old;
}

uint32_t PORT_EnterCritical() { return 0; }

void PORT_LeaveCritical(uint32_t) {}

void PORT_TempName(const char *dir, const char *prefix, char *name, const char *suffix) {
    LX_ASSERT(name != NULL);
    const char *folder = dir;
    if (folder == nullptr) {
        folder = std::getenv("TMPDIR");
        if (folder == nullptr || folder[0] == '\0') folder = "/tmp";
    }
    make_temp_name(folder, prefix, suffix, name, PORT_TEMP_NAME_SZ);
}

int16_t PORT_FileStamp(const char *path, PortStamp *stamp) {
    *stamp = PortStamp{};
    struct stat st;
    if (stat(path, &st) != 0) return -1;
    stamp_from(st, stamp);
    return 0;
}

int16_t PORT_FileStampOf(PortFile *file, PortStamp *stamp) {
    *stamp = PortStamp{};
    struct stat st;
    if (fstat(fileno(file->fp), &st) != 0) return -1;
    stamp_from(st, stamp);
    return 0;
}

bool PORT_SameStamp(const PortStamp &a, const PortStamp &b) {
    return a.seconds == b.seconds && a.nanoseconds == b.nanoseconds && a.size == b.size &&
           a.device == b.device && a.inode == b.inode;
}

int16_t PORT_CreateFile(const char *path) {
    int fd = open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) return errno == EEXIST ? LX_ERR_FILE_EXISTS : LX_ERR_CANT_CREATE;
    close(fd);
    return 0;
}

int16_t PORT_BeginReplace(PortReplace *replace, const char *path, const char *lockedSuffix) {
    replace->file = nullptr;
    replace->tempPath[0] = '\0';
    if (!target_of(path, replace->path, sizeof replace->path)) return LX_ERR_CANT_CREATE;

    // An old file must be one that could be written in place: a read-only
    // file or a folder at the path stays as it is.
    mode_t mode = 0666;
    bool hadOld = false;
    int fd = open(replace->path, O_WRONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd >= 0) {
        struct stat st;
        bool regular = fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
        if (regular) {
            mode = st.st_mode & 07777;
            hadOld = true;
        }
        close(fd);
        if (!regular) return LX_ERR_CANT_CREATE;
    } else if (errno != ENOENT) {
        return LX_ERR_CANT_CREATE;
    }

    const mode_t createMode = hadOld ? 0600 : 0666;
    if (lockedSuffix != nullptr) {
        int n = std::snprintf(replace->tempPath, sizeof replace->tempPath, "%s%s", replace->path, lockedSuffix);
        if (n < 0 || static_cast<size_t>(n) >= sizeof replace->tempPath) {
            replace->tempPath[0] = '\0';
            return LX_ERR_CANT_CREATE;
        }
        unlink(replace->tempPath); // left by a writer that died; a link is removed, not followed
        fd = open(replace->tempPath, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, createMode);
    } else {
        char dir[4096], prefix[300];
        if (!folder_of(replace->path, dir, sizeof dir)) return LX_ERR_CANT_CREATE;
        const char *slash = std::strrchr(replace->path, '/');
        std::snprintf(prefix, sizeof prefix, "%.200s.", slash ? slash + 1 : replace->path);
        for (int attempt = 0; attempt < 10; ++attempt) {
            if (!make_temp_name(dir, prefix, ".tmp", replace->tempPath, sizeof replace->tempPath))
                return LX_ERR_CANT_CREATE;
            fd = open(replace->tempPath, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, createMode);
            if (fd >= 0 || errno != EEXIST) break;
        }
    }
    if (fd < 0) {
        replace->tempPath[0] = '\0';
        return LX_ERR_CANT_CREATE;
    }
    // The new version keeps the old one's permissions; a new file gets
    // those of any file the process creates.
    if (hadOld) fchmod(fd, mode);
    FILE *fp = fdopen(fd, "wb");
    if (!fp) {
        close(fd);
        unlink(replace->tempPath);
        replace->tempPath[0] = '\0';
        return LX_ERR_CANT_CREATE;
    }
    replace->file = wrap_stream(fp);
    if (!replace->file) {
        unlink(replace->tempPath);
        replace->tempPath[0] = '\0';
        return LX_ERR_CANT_CREATE;
    }
    return 0;
}

int16_t PORT_CommitReplace(PortReplace *replace, PortStamp *stamp) {
    LX_ASSERT(replace->file != NULL);
    FILE *fp = replace->file->fp;
    bool ok = std::fflush(fp) == 0 && std::ferror(fp) == 0 && fsync(fileno(fp)) == 0;
    PortStamp written{};
    if (ok) ok = PORT_FileStampOf(replace->file, &written) == 0;
    // The stream is closed here, whatever happened; a close that fails
    // means the contents may not be whole.
    ok = std::fclose(fp) == 0 && ok;
    replace->file->fp = nullptr;
    PORT_CloseFile(replace->file);
    replace->file = nullptr;
    if (ok) ok = std::rename(replace->tempPath, replace->path) == 0;
    if (!ok) {
        unlink(replace->tempPath);
        replace->tempPath[0] = '\0';
        return LX_ERR_WRITE;
    }
    replace->tempPath[0] = '\0';
    sync_folder(replace->path);
    if (stamp) *stamp = written;
    return 0;
}

void PORT_AbortReplace(PortReplace *replace) {
    if (replace->file) {
        PORT_CloseFile(replace->file);
        replace->file = nullptr;
    }
    if (replace->tempPath[0]) unlink(replace->tempPath);
    replace->tempPath[0] = '\0';
}
