// A desktop's time that is virtual: where the window system's loop would wait, the other threads
// take their turns and the clock jumps on.
#pragma once

#include "platform/event_queue.h"
#include "sim/virtual_clock.h"
#include "support/fresh_process.h"
#include "support/seed.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QTimer>
#include <functional>
#include <map>

class VirtualTime {
public:
    VirtualTime() {
        auto* dispatcher = QAbstractEventDispatcher::instance();
        blocking_ = QObject::connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, [this] {
            CLOCK_Sleep(kTurnMs);
            QMetaObject::invokeMethod(
                qApp, [this] { turn(); }, Qt::QueuedConnection);
        });
    }
    ~VirtualTime() {
        QObject::disconnect(blocking_);
        QApplication::processEvents(); // a turn that is queued
    }

    // Runs the timers below `window` by the virtual clock.
    void begin(QWidget* window) {
        window_ = window;
        EVENTS_SetTicker(kTurnMs, [this] { turn(); });
    }
    void end() { window_ = nullptr; }

    std::function<void()> watch; // looks at what happens, every few milliseconds

private:
    static constexpr int kTurnMs = 5;

    void turn() {
        if (window_ == nullptr) {
            return;
        }
        if (watch) {
            watch();
        }
        for (QTimer* timer : window_->findChildren<QTimer*>()) {
            if (!timer->isActive()) {
                due_.erase(timer);
                continue;
            }
            const auto [due, isNew] = due_.try_emplace(timer, CLOCK_After(timer->interval()));
            if (!isNew && due->second <= CLOCK_Now()) {
                due_.erase(due);
                QTimerEvent event(timer->timerId());
                QApplication::sendEvent(timer, &event);
                return; // the others may be gone now
            }
        }
    }

    FreshStart freshStart_;
    SeedTrace seedTrace_;
    VirtualClock clock_{testSeed()};
    QMetaObject::Connection blocking_;
    QWidget* window_ = nullptr;
    std::map<QTimer*, Moment> due_;
};
