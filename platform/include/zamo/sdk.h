/*
 * libzamosdk: directory creation, and the plug-ins that other packages add to the system's hooks.
 * Every function may be called from any thread, but a handle by only one thread at a time. None of
 * them throws.
 */
#ifndef ZAMO_SDK_H
#define ZAMO_SDK_H

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Creates the directory and its missing parents; the process's umask applies to `mode`. 0, also
 * when the directory exists; -1 with errno set (ENOTDIR when something else has the name).
 */
int ZAMOFSMkdirP(const char* path, unsigned mode);

/*
 * The plug-ins of a hook are the executable regular files in
 * /usr/zamo/etc/plugin.d/ + hook name + / (for example plugin.d/net/firewall_enable/). A missing
 * directory is an empty one.
 */
typedef struct VLIBPlugin VLIBPlugin;

enum {
    VLIB_PLUGIN_PRE = 4,  /* before the change: the plug-ins' argument is "pre" */
    VLIB_PLUGIN_POST = 5, /* after the change: it is "post" */
};

/*
 * Prepares a run of the hook's plug-ins; `category` is only informative, since the hook's name
 * holds it (net/firewall_enable). 0 and a handle for VLIBPluginExit(), or negative with
 * `*handle` NULL.
 */
int VLIBPluginSDKInit(const char* category, const char* hook, VLIBPlugin** handle);

/*
 * Sets an argument, which the plug-ins find in their environment under `name`. A later value
 * replaces an earlier one. 0, or negative when the name is empty or holds a `=`.
 */
int VLIBPluginSetArg(VLIBPlugin* handle, const char* name, const char* value);

/*
 * Runs the plug-ins one after another in the byte order of their names, and waits for each as long
 * as it takes. All of them run, even after a failure. 0 if every one exited with status 0, else
 * negative; each failure is logged. They are started as VLIBCExecv() starts programs (zamo/core.h):
 * with /dev/null as standard input and in a process group of their own. A file that belongs neither
 * to root nor to the effective user, or that group or others may write to, is not run and counts as
 * failed.
 */
int VLIBPluginAction(int action, VLIBPlugin* handle);

/* Releases the handle; NULL is allowed. */
void VLIBPluginExit(VLIBPlugin* handle);

#ifdef __cplusplus
}
#endif

#endif
