// What the run as a whole remembers: its exit code, of what kind it is, whether the user has
// interrupted it. Words of their own, so that every layer can read and set them from any thread.
#pragma once

// 0 or 1. Set to 1 by every reported error; the boot-ROM operations set it to 1 when they start and
// to 0 when they succeed. After an interruption it stays 1, and in an unattended run after any
// reported failure.
void RUN_SetExitCode(int code);
int RUN_GetExitCode();
// How often it was set: where it was not, nothing has judged the run meanwhile.
unsigned RUN_Judgements();
// A failure was reported.
void RUN_NoteFailure();
// Another try begins: the exit code is 0 until something is reported again.
void RUN_ForgetFailure();

// Unattended: Exit is queued on the command line, nothing may be shown or asked.
void RUN_SetUnattended(bool unattended);
bool RUN_IsUnattended();

// Quiet: nobody is asked and no box comes up. An unattended run always is; another one is while it
// does something by itself, and a failure that was reported then stays in the exit code as well.
void RUN_SetQuiet(bool quiet);
bool RUN_IsQuiet();

// Isolated: the run is its command line alone; it reads and writes nothing that is remembered.
void RUN_SetIsolated(bool isolated);
bool RUN_IsIsolated();

// Program files with damaged records may be loaded in an unattended run.
void RUN_SetAcceptDamaged(bool accept);
bool RUN_AcceptsDamaged();

// What cannot be taken back was agreed to before the run (--yes).
void RUN_SetConfirmed(bool confirmed);
bool RUN_IsConfirmed();

// The user ended the run (Ctrl-C): the exit code is 1 from here on, long waits end.
void RUN_Interrupt();
bool RUN_IsInterrupted();

// Back to the state of a fresh process.
void RUN_Reset();
