/*
 * libzamocore: processes, timed file locks, key/value files, string lists and the last error.
 *
 * Every function may be called from any thread, and none of them throws. Every descriptor that they
 * open is close-on-exec and above 2, even if the caller has closed its standard streams. Text
 * arguments must not be NULL unless stated otherwise.
 */
#ifndef ZAMO_CORE_H
#define ZAMO_CORE_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Codes of the last error, see VLIBCErrSetEx(). */
enum {
    ZAMO_ERR_SYSTEM = 0x0100,         /* a system call failed; see errno */
    ZAMO_ERR_NO_MEMORY = 0x0200,      /* an allocation failed */
    ZAMO_ERR_BAD_PARAMETERS = 0x0D00, /* an argument cannot be used */
};

/*
 * Runs the program `path` with the NULL-terminated `argv`, without a shell.
 *
 * The program gets /dev/null as its standard input, the caller's standard output and error (or
 * /dev/null for one that the caller has closed), no other descriptor, an environment that holds
 * only PATH, no blocked signal and the default signal dispositions.
 *
 * It runs in a process group of its own, so that a lost terminal or Ctrl-C ends the caller but not
 * a program in the middle of its work. When the caller has a controlling terminal, the program
 * runs in a new session: it can write to the terminal through its standard output and error, is
 * never stopped for it, and cannot open /dev/tty.
 *
 * `wait` 1 blocks until the program ends: 0 when it exited with status 0; -1 when it could not be
 * started, exited with another status or was ended by a signal. `wait` 0 returns as soon as the
 * program runs, and nobody learns its status.
 *
 * The result is right whatever the process does with its children: it may ignore SIGCHLD, reap in
 * a handler or wait for any child in another thread, and its disposition of SIGCHLD is never
 * changed. If the process has several threads or does not leave SIGCHLD at its default, the program
 * is not a direct child of the process, and its start takes about 0.1 ms longer; another thread
 * that calls setuid() or its kin meanwhile waits until the program ends.
 */
int VLIBCExecv(const char* path, const char* const argv[], int wait);

/*
 * Starts argv[0] as VLIBCExecv() does and returns a stream on its output (`mode` "r") or on its
 * input ("w"). NULL, with errno set, when it cannot be started; a missing program is one such case.
 * The stream is released with VLIBCPclose().
 *
 * It is an ordinary stdio stream: a signal handler that was installed without SA_RESTART makes a
 * read or write on it fail with EINTR, and the caller decides whether to go on (after clearerr()).
 */
FILE* VLIBCPopen(const char* mode, const char* const argv[]);

/*
 * Closes the stream and waits for its program. The wait status as waitpid() gives it, or -1 with
 * errno set, also when the stream does not come from VLIBCPopen(). Waiting survives signal
 * handlers.
 *
 * One case loses the status (-1, ECHILD): a process with a single thread and the default SIGCHLD
 * disposition that itself waits for any child between VLIBCPopen() and this call.
 */
int VLIBCPclose(FILE* stream);

/*
 * Locks the whole file `path`, which is created if it is missing: `exclusive` 1 excludes every
 * other lock, 0 only exclusive ones. Waits at most `seconds`, trying about every millisecond; 0
 * tries once. 1 with the descriptor in `*fd`; 0 with errno set (ETIMEDOUT when the time ran out)
 * and `*fd` unchanged.
 *
 * No other user can hold the lock or stop the caller from getting it: a lock file belongs to root
 * or the caller's effective user and has mode 0600; a wider mode of an own file is reduced to that.
 * A file of another owner is replaced. So is a symbolic link, FIFO or other special file, or a file
 * with several hard links, in a directory that others may write to (such as /tmp); in other
 * directories these are refused. A non-empty directory in the way is renamed. When the caller may
 * not replace it, the call fails at once (EPERM). This needs a directory that is sticky or
 * belongs to root or the caller.
 *
 * The lock is a record lock bound to the descriptor (F_OFD_SETLK). It excludes other processes,
 * other descriptors of this process, and the record locks of fcntl(); it does not exclude flock().
 */
int VLIBCFileLockTimeByFile(const char* path, int exclusive, int seconds, int* fd);

/* Unlocks and closes; the file stays. Non-zero on success, 0 with errno set on failure. */
int VLIBCFileUnlockByFile(int fd);

/*
 * Key/value files hold one `key="value"` a line. Quotes are only needed to preserve blanks at
 * either end of the value. A line that begins with `#` is a comment. If a key appears several
 * times, the last one wins. Files over 1 MiB are refused. In a world-writable directory, a symbolic
 * link or a file that belongs neither to root nor to the caller's effective user is not read.
 *
 * `flags` is reserved and must be 0.
 */

/*
 * Copies the value of `key` to `value`, cut to size - 1 characters, and returns the number of
 * characters copied. 0, with an empty text in `value`, when the key or the file is missing or the
 * value is empty; negative, with the last error set, when the file cannot be read.
 */
int VLIBCFileGetKeyValue(const char* file, const char* key, char* value, int size, int flags);

/*
 * Creates or replaces the key and keeps every other line. The file is replaced by a whole new one
 * of the same mode and owner (mode 0644 when there was none), so that a reader sees the old text or
 * the new one; a symbolic link is replaced by a file. 0, or negative with the last error set; then
 * the file is as it was. The caller serialises writers. A key with a line feed, a `=` or a leading
 * `#`, and a value with a line feed or a quote, cannot be stored.
 */
int VLIBCFileSetKeyValue(const char* file, const char* key, const char* value, int flags);

/* 1 when the key holds exactly this value, else 0. */
int VLIBCFileCheckKeyValue(const char* file, const char* key, const char* value, int flags);

/* 1 when the file exists, else 0. */
int VLIBCFileExist(const char* file);

/* 1 when /etc.defaults/zamoinfo.conf holds `feature` with the value yes, else 0. */
int VLIBCSupportGet(const char* feature);

/*
 * The calling thread's last error: a code and the source file and line that found it. They are 0,
 * "" and 0 before the first one. The file name is copied, and cut to 255 characters; NULL is "".
 */
void VLIBCErrSetEx(int code, const char* file, int line);
int VLIBCErrGet(void);
const char* VLIBCErrorGetFile(void);
int VLIBCErrorGetLine(void);

/* A growing list of texts. */
typedef struct VLIBCSzList VLIBCSzList;

/* An empty list with room for `capacity` texts, or NULL with the last error set. */
VLIBCSzList* VLIBCSzListAlloc(int capacity);

/*
 * Appends a copy of `text`. This may move the list, so `*list` is written. 0, or negative with the
 * last error set; then the list is as it was.
 */
int VLIBCSzListPush(VLIBCSzList** list, const char* text);

/* The text at `index`, valid until the list changes, or NULL outside the list. */
const char* VLIBCSzListGet(const VLIBCSzList* list, int index);

/* The number of texts; 0 for NULL. */
int VLIBCSzListCount(const VLIBCSzList* list);

/* Releases the list; NULL is allowed. */
void VLIBCSzListFree(VLIBCSzList* list);

#ifdef __cplusplus
}
#endif

#endif
