#include "platform/second_buffer.h"

#include <utility>

SecondBuffer::SecondBuffer(std::function<void(std::string&)> job)
    : job_(std::move(job)), thread_(CLOCK_StartThread([this] { run(); })) {
}

void SecondBuffer::await() {
    CLOCK_Wait(kNever, [this] { return state_ != State::busy; });
}

void SecondBuffer::exchange(std::string& buffer) {
    await();
    std::swap(buffer_, buffer);
    become(State::busy);
}

void SecondBuffer::finish() {
    if (thread_) {
        await();
        become(State::ended);
        CLOCK_JoinThread(thread_);
        thread_.reset();
    }
}

void SecondBuffer::run() {
    while (true) {
        CLOCK_Wait(kNever, [this] { return state_ != State::idle; });
        if (state_ == State::ended) {
            return;
        }
        job_(buffer_);
        become(State::idle);
    }
}

void SecondBuffer::become(State state) {
    state_ = state;
    CLOCK_Notify();
}
