#include "ui/event_hook.h"

#include "platform/event_queue.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <memory>

namespace {

const QEvent::Type kWakeEvent = static_cast<QEvent::Type>(QEvent::registerEventType());

// Receives the wake-ups of other threads as events of Qt. While one is under way no second one is
// posted; each runs one event of the queue and asks for the next turn, so that window events get
// theirs.
class WakeReceiver : public QObject {
public:
    explicit WakeReceiver(std::function<void()> afterPosted)
        : afterPosted_(std::move(afterPosted)) {
        QCoreApplication::instance()->installEventFilter(this);
    }

    uint64_t delivered() const { return delivered_; }

    void wake() {
        if (!underWay_.exchange(true)) {
            QCoreApplication::postEvent(this, new QEvent(kWakeEvent));
        }
    }

    bool event(QEvent* event) override {
        if (event->type() != kWakeEvent) {
            return QObject::event(event);
        }
        underWay_ = false;
        if (EVENTS_RunPosted()) {
            wake();
            afterPosted_();
        }
        return true;
    }

    bool eventFilter(QObject*, QEvent*) override {
        ++delivered_;
        return false;
    }

private:
    std::function<void()> afterPosted_;
    std::atomic<bool> underWay_{false};
    uint64_t delivered_ = 0;
};

// Shared with the queue, whose posting threads may hold it a moment longer than this module.
std::shared_ptr<WakeReceiver> receiver;

// Counts what was delivered: the dispatcher's own answer leaves out events that Qt posts to itself,
// and a wait after one of them could sleep over what it has changed.
bool processOne() {
    const uint64_t before = receiver->delivered();
    const bool dispatched =
        QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents);
    return dispatched || receiver->delivered() != before;
}

void waitOne(Moment deadline) {
    constexpr int64_t kUsPerMs = 1000;
    constexpr int64_t kLongestMs = 24LL * 3600 * 1000;
    QTimer timer; // its only purpose is to end the wait
    if (deadline != kNever) {
        const int64_t ms = (deadline.us - CLOCK_Now().us + kUsPerMs - 1) / kUsPerMs;
        timer.setSingleShot(true);
        timer.start(static_cast<int>(std::clamp<int64_t>(ms, 0, kLongestMs)));
    }
    QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents |
                                                        QEventLoop::WaitForMoreEvents);
}

} // namespace

void EVENTHOOK_Install(std::function<void()> afterPosted) {
    receiver = std::make_shared<WakeReceiver>(std::move(afterPosted));
    EVENTS_SetLoop({processOne, waitOne, [target = receiver] { target->wake(); }});
}

void EVENTHOOK_Remove() {
    EVENTS_SetLoop({});
    receiver.reset();
}
