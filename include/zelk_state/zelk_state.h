#pragma once

/// @file
/// ZELK_STATE.DLL: the network configuration of this machine for programs of any language. It does what `zelkctl show`,
/// `export`, `apply`, `pending`, `confirm` and `restore` do, by the same code, and gives the same JSON as their
/// `result` with `--json`; see docs/c-interface.md for an example.
///
/// **Texts** are UTF-8 and end with a null character. Every document, result, error and event is JSON.
///
/// **Results.** Every operation returns a code of `zelk_state_code`, which is the exit code that the tool would have
/// had, and sets exactly one of two texts to something other than null:
/// - `*result`, when it has something to tell. That a change failed, and was undone, is also told by a result.
/// - `*error`, when it was refused or could not begin: an object with `kind`, `exitCode`, `operation`, `adapter`,
///   `reason` and `hint`. What is not known is null.
///
/// When there is not enough memory for a document or a result, the operation returns ZELK_STATE_FAILED with the reason
/// "out of memory"; that text needs no memory. A process that has no memory left for the smallest block is ended.
///
/// Where the caller passes a null pointer instead of the address of a text, that text is not given.
///
/// **Ownership.** The caller owns the texts that it gets and frees them with zelk_state_free(), which alone may free
/// them. Texts that the caller passes remain the caller's and are not used after the call.
///
/// **Options** are a JSON object, or null for none. A key that is not known is refused with ZELK_STATE_USAGE, as is a
/// value that makes no sense. Times are whole seconds from 1 to 86400.
///
/// **Threads.** All functions may be called by several threads at once. Only one change of the machine is made at a
/// time: another one, in whatever thread or process, waits for at most `timeout` seconds and then returns
/// ZELK_STATE_BUSY. No function may be called from DllMain().
///
/// **Compatibility.** A later version adds functions, keys of options and members of results, and renames, removes or
/// redefines nothing. A program ignores the members that it does not know.
///
/// No C++ exception leaves the DLL. The header can be used by C99 and C++ and includes nothing.

/// The calling convention of all functions and of the callback, where the machine has several.
#define ZELK_STATE_CALL __cdecl

#ifdef __cplusplus
extern "C"
{
#endif

    /// How an operation has ended; the exit codes of `zelkctl`.
    enum zelk_state_code
    {
        ZELK_STATE_DONE = 0,
        ZELK_STATE_FAILED = 1,          ///< what was asked for could not be done, or was cancelled
        ZELK_STATE_USAGE = 2,           ///< an argument cannot be meant; nothing was changed
        ZELK_STATE_NO_SUCH_ADAPTER = 3, ///< there is no such adapter, or there are several; nothing was changed
        ZELK_STATE_NEEDS_ELEVATION = 4, ///< the process is not elevated; nothing was changed
        ZELK_STATE_TIME_OVER = 5,       ///< a command did not end in time
        ZELK_STATE_NOT_VERIFIED = 6,    ///< done, but in the time given the machine did not show all of it
        ZELK_STATE_BUSY = 7,            ///< another change is being made, or waits to be confirmed
        ZELK_STATE_NOT_POSSIBLE = 8,    ///< not possible on this system; nothing was changed
        ZELK_STATE_DIFFERENCES = 10     ///< zelk_state_plan() has found something to change
    };

    /// A function of the caller's that an operation calls while it works, on the same thread.
    ///
    /// It is called with an event, and several times a second with null, which only asks whether to go on. It may be
    /// called with null before the first event and after the last one. To cancel from another thread, let that thread
    /// set a variable, and return it here.
    ///
    /// It must return normally: no exception and no longjmp(). It may call zelk_state_read(), zelk_state_export() and
    /// zelk_state_plan().
    ///
    /// @param context  what the caller of the operation has passed
    /// @param event  null, or an object, valid until the function returns, with `event`: "stepBegun" and "stepEnded"
    ///               come with `undoing` (whether the previous state is being restored), `number` (from 1), `count` and
    ///               `step`, which after its end has its `outcome`; "verifying" stands alone
    /// @return 0 to go on; anything else to cancel, once and for all. If the step that is being performed is a command,
    ///         it is ended. What was done is undone, unless it is to be kept. Undoing is not cancelled.
    typedef int(ZELK_STATE_CALL* zelk_state_progress)(void* context, const char* event); // NOLINT(*-use-using)

    /// Frees a text that this DLL has returned. Null is allowed. Never fails and never blocks.
    void ZELK_STATE_CALL zelk_state_free(char* text);

    /// The version of the library, as `zelkctl version` shows it: an object with `version` and `description`. Does not
    /// block.
    /// @param[out] result,error  the answer, or why there is none
    int ZELK_STATE_CALL zelk_state_version(char** result, char** error);

    /// Reads the whole machine, as `zelkctl show` does. It needs no elevation, changes nothing, and takes tens of
    /// milliseconds. What could not be read is null and stands among the `problems`.
    /// @param options  `identity` and `routes`: false leaves the names of the machine or the routes unread
    /// @param[out] result,error  the answer, or why there is none
    /// @return ZELK_STATE_FAILED when neither the adapters that run nor those that are installed could be read.
    int ZELK_STATE_CALL zelk_state_read(const char* options, char** result, char** error);

    /// Gives the configuration of adapters as a desired state, as `zelkctl export` does. It needs no elevation and
    /// changes nothing.
    /// @param options  `adapters`: a list of texts, each a name, an index, a hardware address or a GUID; else all
    ///                 adapters and the names of the machine are exported
    /// @param[out] result,error  the answer, or why there is none
    /// @return ZELK_STATE_NO_SUCH_ADAPTER when a text names no adapter or several.
    int ZELK_STATE_CALL zelk_state_export(const char* options, char** result, char** error);

    /// Shows what zelk_state_apply() would do, as `zelkctl apply --check` does: `differs`, `items`, `steps`,
    /// `notes` and `pending`. It needs no elevation and changes nothing.
    /// @param desired  the desired state, as docs/desired-state.md describes it
    /// @param options  no keys yet
    /// @param[out] result,error  the answer, or why there is none
    /// @return ZELK_STATE_DONE when nothing would be changed, else ZELK_STATE_DIFFERENCES. ZELK_STATE_USAGE,
    ///         ZELK_STATE_NO_SUCH_ADAPTER or ZELK_STATE_NOT_POSSIBLE when the desired state is refused; the reason
    ///         names every fault and its place in the document.
    int ZELK_STATE_CALL zelk_state_plan(const char* desired, const char* options, char** result, char** error);

    /// Takes the machine to a desired state, as `zelkctl apply` does. Everything is checked before anything is changed.
    /// It performs the steps and reads the machine until everything is as wanted; when a step fails or takes too long,
    /// or the caller cancels, what was done is undone. It blocks until all of that is over.
    ///
    /// With `confirmWithin` the previous state is restored unless zelk_state_confirm() is called in that time, counted
    /// from the end of the change, even when this process is ended. That is the work of a second process: zelkctl.exe
    /// of the same version must lie in the folder of ZELK_STATE.DLL and is looked for nowhere else; otherwise the
    /// result is ZELK_STATE_NOT_POSSIBLE and nothing was changed.
    /// @param desired  the desired state
    /// @param options  `timeout`: for each command, for the verification, and for another change to end, 60 by default;
    ///                 `keep`: true leaves what was done by a change that failed; `confirmWithin`; `waitFor`: an
    ///                 address whose answer to an echo request confirms the change; `label`: a text that
    ///                 zelk_state_pending() shows with the change
    /// @param progress  null, or called while the operation works
    /// @param context  passed to `progress`
    /// @param[out] result,error  the answer, or why there is none
    /// @return Any code but ZELK_STATE_DIFFERENCES.
    int ZELK_STATE_CALL zelk_state_apply(const char* desired, const char* options, zelk_state_progress progress,
                                         void* context, char** result, char** error);

    /// Lists the changes that wait to be confirmed or were interrupted, as `zelkctl pending` does: an array.
    /// @param options  no keys yet
    /// @param[out] result,error  the answer, or why there is none
    /// @return ZELK_STATE_NEEDS_ELEVATION without elevation.
    int ZELK_STATE_CALL zelk_state_pending(const char* options, char** result, char** error);

    /// Keeps the changes that wait to be confirmed, as `zelkctl confirm` does.
    /// @param options  `timeout`: for another change to end, 60 by default; `change`: only the one with this id, which
    ///                 is `pendingChange` in the result of zelk_state_apply()
    /// @param[out] result,error  the answer, or why there is none
    /// @return ZELK_STATE_FAILED when nothing waits.
    int ZELK_STATE_CALL zelk_state_confirm(const char* options, char** result, char** error);

    /// Undoes the changes that are pending, as `zelkctl restore` does. It blocks until that is done
    /// and is not cancelled; `progress` can only cancel waiting for another change.
    /// @param options  `timeout`: for each command, for the verification, and for another change to end, 60 by default;
    ///                 `discard`: true forgets what is pending and restores nothing; `change`: only the one with this
    ///                 id
    /// @param progress  null, or called while the operation works
    /// @param context  passed to `progress`
    /// @param[out] result,error  the answer, or why there is none
    /// @return ZELK_STATE_FAILED when nothing is pending; ZELK_STATE_NOT_VERIFIED when not everything is as before, in
    ///         which case the change stays pending.
    int ZELK_STATE_CALL zelk_state_restore(const char* options, zelk_state_progress progress, void* context,
                                           char** result, char** error);

#ifdef __cplusplus
}
#endif
