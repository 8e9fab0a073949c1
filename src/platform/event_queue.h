// The user-interface thread's queue of events: how other threads and timers reach it, and how it
// waits. The default is a plain queue; a desktop puts its own event loop in its place.
#pragma once

#include "platform/clock.h"

#include <functional>

using Event = std::function<void()>;

// Any thread: has `event` run on the user-interface thread. Dropped after EVENTS_Close.
void EVENTS_Post(Event event);

// A thread other than the user interface's: has `event` run there and waits until it has run.
// Result: whether it ran; false when the queue was closed before (so a thread that waits for the
// user interface never holds up a shutdown). On the user-interface thread the event runs at once.
bool EVENTS_PostAndWait(Event event);

// User-interface thread: runs one waiting event or due ticker. Result: false when there was none.
bool EVENTS_ProcessOne();

// User-interface thread: runs one posted event, leaving ticker and window events alone. For a
// window system's loop that has been woken while it runs by itself (a modal dialog).
bool EVENTS_RunPosted();

// User-interface thread: waits until an event or the ticker is due, and runs it.
void EVENTS_WaitOne();

// User-interface thread: waits for something that is no event, in short steps between which events
// are processed. `awaited` waits for it up to the moment that it is given and tells whether it has
// come. Result: whether it came before the deadline.
bool EVENTS_WaitBeside(Moment deadline, const std::function<bool(Moment)>& awaited);

// User-interface thread: a pause in which events are processed.
void EVENTS_Sleep(int64_t ms);

// User-interface thread: has `tick` run every `intervalMs` while events are processed; an interval
// of 0 stops it. There is one ticker.
void EVENTS_SetTicker(int intervalMs, Event tick);

// Makes the calling thread the user-interface thread and opens an empty queue.
void EVENTS_Open();
// Drops what is queued and releases whoever waits in EVENTS_PostAndWait.
void EVENTS_Close();

// What a window system's event loop offers in place of the plain queue. `wake` may be called on any
// thread and makes a waiting `waitOne` return; posted events stay in this module's queue and are
// run by it, so that both loops keep one order.
struct EventLoop {
    std::function<bool()> processOne;    // one window event; false when there was none
    std::function<void(Moment)> waitOne; // waits for window events or `wake` up to the moment
    std::function<void()> wake;
};
// User-interface thread; an empty record puts the plain queue back.
void EVENTS_SetLoop(EventLoop loop);
