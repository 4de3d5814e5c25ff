// portab.h - the engine's way to files: a handle over a buffered stream,
// bytes and CR LF lines, a file's modification stamp, temporary names, the
// replacement of a file by a new version written beside it, and an
// advisory lock that excludes other processes.
//
// The routines write no messages: their callers report in their own words.
#ifndef LX_PORTAB_H
#define LX_PORTAB_H

#include <cstdio>

#include "lxbase.h"

// An open file. Allocated by PORT_OpenFile, freed by PORT_CloseFile.
struct PortFile {
    FILE *fp; // the stream
};

#define PORT_IS_VALID_FILE_ID(fid) ((fid) != nullptr && (fid)->fp != nullptr)

// Open modes. Text files are opened in binary mode too: the line routines
// handle CR LF themselves. Any other value opens for reading ("r").
enum : int16_t {
    PORT_MODE_READ = 0,       // "rb"
    PORT_MODE_WRITE = 1,      // "wb"
    PORT_MODE_UPDATE = 2,     // "w+b"
    PORT_MODE_READ_TEXT = 3,  // "rb"
    PORT_MODE_WRITE_TEXT = 4, // "wb"
};

// The line end of every text file the engine reads or writes.
inline constexpr char PORT_LINE_END[] = "\r\n";

// Size of the buffer PORT_TempName fills.
inline constexpr int32_t PORT_TEMP_NAME_SZ = 256;

// Opens path in mode. Null if the handle can't be allocated or the stream
// can't be opened; a folder is never opened.
PortFile *PORT_OpenFile(const char *path, int16_t mode);
// Closes the stream and frees the handle. Always 0.
int16_t PORT_CloseFile(PortFile *file);

// Modification time of path in seconds, 0 if it can't be examined.
int32_t PORT_FileTime(const char *path);

int32_t PORT_Tell(PortFile *file);
int16_t PORT_Seek(PortFile *file, int32_t offset, int16_t whence);
uint32_t PORT_Read(PortFile *file, void *buffer, uint32_t count);
uint32_t PORT_Write(PortFile *file, const void *buffer, uint32_t count);

// Reads count bytes at position offset of the file at path into buffer,
// opening the file for this read alone and closing it behind it: one
// open, a positional read (more only where the system hands over less),
// one close, and no stream or buffer of its own. Gives the number of bytes
// read, fewer at the end of the file or on an error, or -1 if the file
// can't be opened for reading or is a folder.
int32_t PORT_ReadAt(const char *path, int32_t offset, void *buffer, uint32_t count);

// One byte as 0..255, or -1 at the end of the file or on an error.
int32_t PORT_ReadByte(PortFile *file);
// 1, or 0 if the byte couldn't be written.
uint32_t PORT_WriteByte(PortFile *file, int32_t byte);

// Reads a line into buffer (size bytes, always NUL-terminated). Gives the
// length of a line ended by CR LF (the two are not stored), or size - 1
// when the buffer is full (the rest follows at the next call), or -1 when
// the file ends, a read fails or a byte 0 comes before the line's CR LF.
int16_t PORT_ReadLine(PortFile *file, char *buffer, int16_t size);
// Writes text and CR LF. The number of bytes written, or LX_ERR_FAILED.
int16_t PORT_WriteLine(PortFile *file, const char *text);

// Takes an advisory lock that excludes other processes (and other handles
// of this one) from the file at path, waiting at most the lock wait. The
// lock stands on a companion file, path + PORT_LOCK_SUFFIX, which survives
// the replacement of the file itself; the companion is created if needed
// and left in place. Gives a token (0 or more) for PORT_UnlockFile, or a
// negative value if the lock can't be had.
inline constexpr char PORT_LOCK_SUFFIX[] = ".lock";
int16_t PORT_LockFile(const char *path);
// Releases the lock of a token from PORT_LockFile. Always 0.
int16_t PORT_UnlockFile(int16_t token);
// Test hook: the longest wait of PORT_LockFile, in milliseconds (default
// 10000). Gives the old value.
int32_t PORT_SetLockWait(int32_t milliseconds);

// Critical sections: the engine has no threads of its own, so these only
// mark where one would stand. PORT_EnterCritical gives 0.
uint32_t PORT_EnterCritical();
void PORT_LeaveCritical(uint32_t token);

// Leaves in name (PORT_TEMP_NAME_SZ bytes) the path of a file that doesn't
// exist yet: in dir, or with null in the folder for temporary files
// (TMPDIR, else /tmp), made of prefix, a unique part and suffix. If it
// can't, name is left empty.
void PORT_TempName(const char *dir, const char *prefix, char *name, const char *suffix);

// What tells one version of a file from another: the modification time
// to the nanosecond, the size and the file's identity (device and inode).
// A file replaced by PORT_CommitReplace always gets a new identity.
struct PortStamp {
    int64_t seconds;
    int32_t nanoseconds;
    int64_t size;
    uint64_t device;
    uint64_t inode;
    bool regular; // a plain file, not a folder or a device; not compared
};
// The stamp of path, or of an open file. 0, or -1 if it can't be examined
// (the stamp is then all zeros).
int16_t PORT_FileStamp(const char *path, PortStamp *stamp);
int16_t PORT_FileStampOf(PortFile *file, PortStamp *stamp);
bool PORT_SameStamp(const PortStamp &a, const PortStamp &b);

// Creates path as a new empty file; fails if anything is there already.
// 0, LX_ERR_FILE_EXISTS, or LX_ERR_CANT_CREATE for any other failure.
int16_t PORT_CreateFile(const char *path);

// Replacing a file whole. PORT_BeginReplace opens a new file beside the
// one at path (a symbolic link is followed, so the link stays), with the
// old file's permissions; it fails, leaving nothing behind, if the old file
// exists but can't be opened for writing, or the new one can't be made.
// The caller writes the new contents to replace->file. PORT_CommitReplace
// flushes and syncs the new file, renames it over the old one in one step
// and syncs the folder, so that at any moment the path holds the old
// version or the new one, whole. PORT_AbortReplace throws the new file
// away. Both end the replacement: the handle is closed either way.
struct PortReplace {
    PortFile *file;      // the new version, open for writing
    char path[4096];     // the file to be replaced
    char tempPath[4096]; // the new version until it takes path's place
};
//
// With lockedSuffix null, the new file gets a name of its own
// (PORT_TempName), and a writer that dies before the end leaves it behind.
// A caller that holds the lock of path (PORT_LockFile), so that no other
// writer replaces the same file meanwhile, passes a suffix instead: the new
// file is then path + lockedSuffix, and one that a dead writer has left
// there is replaced, so that crashes never leave more than one.
// 0, or LX_ERR_CANT_CREATE.
int16_t PORT_BeginReplace(PortReplace *replace, const char *path, const char *lockedSuffix = nullptr);
// 0, with the new file's stamp in stamp (if not null); or LX_ERR_WRITE if
// the new contents couldn't be written whole or put in place, and the old
// file stays.
int16_t PORT_CommitReplace(PortReplace *replace, PortStamp *stamp);
void PORT_AbortReplace(PortReplace *replace);

#endif
