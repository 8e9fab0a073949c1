// A buffer that a thread of its own fills or empties while its user works with another one: a long
// file is read, or written, beside what is made of it. The two are all that is held of the file.
#pragma once

#include "platform/clock.h"

#include <atomic>
#include <functional>
#include <string>

class SecondBuffer {
public:
    // `job` is called on the other thread, with one buffer after the other. What it leaves beside
    // is its user's behind every exchange() and finish(), until the next begins.
    explicit SecondBuffer(std::function<void(std::string&)> job);
    SecondBuffer(const SecondBuffer&) = delete;
    SecondBuffer& operator=(const SecondBuffer&) = delete;
    ~SecondBuffer() { finish(); }

    // Waits for the job before.
    void await();
    // Waits for the job before, takes its buffer for this one and begins the next job with this.
    void exchange(std::string& buffer);
    // Waits for the last job and ends the thread. Any number of times.
    void finish();

private:
    enum class State { idle, busy, ended };
    void run();
    void become(State state);

    std::function<void(std::string&)> job_;
    std::string buffer_; // the thread's while it is busy
    std::atomic<State> state_{State::idle};
    ClockThreadPtr thread_;
};
