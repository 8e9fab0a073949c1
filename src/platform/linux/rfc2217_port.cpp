// A port of a TCP port server: "rfc2217://HOST:PORT".
//
// Whoever waits for something of the server takes in all that has come, so the worker may wait for
// bytes while the user interface awaits the answer to a setting: each finds what is its own under
// the lock, and tells the other that something came.
#include "platform/clock.h"
#include "platform/format.h"
#include "platform/linux/descriptor_wait.h"
#include "platform/linux/line_limits.h"
#include "platform/linux/tcp_connection.h"
#include "platform/rfc2217_codec.h"
#include "platform/serial_port.h"

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr int64_t kNegotiateMs = 3000; // until the server has said whether it can do all this
constexpr int64_t kAnswerMs = 1000;    // for each setting
// A server that sends without end fills neither memory nor time.
constexpr size_t kMostAnswers = 64;       // kept
constexpr size_t kMostReceived = 1 << 16; // bytes kept; others are lost, as where a device is full
constexpr size_t kMostAtOnce = 1 << 16;   // bytes taken in before the deadline is looked at again
constexpr size_t kMostOutgoing = 1 << 16; // bytes that the server has asked for and does not take

struct Session {
    int descriptor = -1;
    std::string name;

    std::mutex mutex; // guards what follows
    TelnetDecoder decoder;
    TelnetNegotiation negotiation;
    std::vector<uint8_t> received;
    std::vector<uint8_t> outgoing;
    std::vector<TelnetEvent> answers; // to settings, not yet claimed
    bool suspended = false;           // the server can take no more for now
    std::string lost;
    std::string refusal;
    uint32_t rate = 0;
    Moment lineFree;         // when what was written has left at `rate`
    int64_t roundTripUs = 0; // the longest that an answer has taken

    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() {
        if (descriptor >= 0) {
            close(descriptor);
        }
    }
};

// One setting, and the answers that belong to it: those whose value lies between the two.
struct Setting {
    uint8_t command;
    std::vector<uint8_t> value;
    uint8_t firstAnswer = 0;
    uint8_t lastAnswer = 255;
};

// The following run with the session's lock held.

void lose(Session& session, const std::string& reason) {
    if (session.lost.empty()) {
        session.lost = reason;
    }
}

void flush(Session& session) {
    while (!session.outgoing.empty() && session.lost.empty()) {
        const ssize_t count = send(session.descriptor, session.outgoing.data(),
                                   session.outgoing.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0) {
            if (errno != EAGAIN && errno != EINTR) {
                lose(session, "the connection was lost: " + systemText(errno));
            }
            return;
        }
        session.outgoing.erase(session.outgoing.begin(), session.outgoing.begin() + count);
    }
}

void handleEvent(Session& session, const TelnetEvent& event) {
    if (event.verb != TELNET_SETTING) {
        telnetNegotiate(session.negotiation, event, session.outgoing);
        if (session.outgoing.size() > kMostOutgoing) {
            lose(session, "the port server asks without taking the answers");
        }
    } else if (event.subject == COMPORT_SUSPEND + kComPortAnswer ||
               event.subject == COMPORT_RESUME + kComPortAnswer) {
        session.suspended = event.subject == COMPORT_SUSPEND + kComPortAnswer;
    } else if (event.subject > kComPortAnswer &&
               event.subject <= kComPortAnswer + COMPORT_SET_CONTROL &&
               session.answers.size() < kMostAnswers) {
        session.answers.push_back(event);
    }
}

// Takes in what has come, without waiting. Result: whether anything has.
bool receive(Session& session) {
    bool any = false;
    uint8_t buffer[4096];
    size_t taken = 0;
    while (session.lost.empty() && taken < kMostAtOnce) {
        const ssize_t count = recv(session.descriptor, buffer, sizeof buffer, MSG_DONTWAIT);
        if (count > 0) {
            taken += static_cast<size_t>(count);
            std::vector<TelnetEvent> events;
            telnetDecode(session.decoder, {buffer, static_cast<size_t>(count)}, session.received,
                         events);
            session.received.resize(std::min(session.received.size(), kMostReceived));
            for (const TelnetEvent& event : events) {
                handleEvent(session, event);
            }
        } else if (count == 0) {
            lose(session, "the port server closed the connection");
        } else if (errno == EAGAIN) {
            break;
        } else if (errno != EINTR) {
            lose(session, "the connection was lost: " + systemText(errno));
        }
        any = true;
    }
    return any;
}

// Claims the answer to a setting.
bool claimAnswer(Session& session, const Setting& setting, std::vector<uint8_t>& value) {
    for (auto answer = session.answers.begin(); answer != session.answers.end(); ++answer) {
        if (answer->subject == setting.command + kComPortAnswer && !answer->value.empty() &&
            (answer->value.size() > 1 ||
             (answer->value[0] >= setting.firstAnswer && answer->value[0] <= setting.lastAnswer))) {
            value = std::move(answer->value);
            session.answers.erase(answer);
            return true;
        }
    }
    return false;
}

// From here on the functions take the lock themselves.

// Waits until `ready`, which is called with the lock held, until `stop`, the deadline or the loss
// of the connection. Result: whether it is ready.
bool waitFor(Session& session, Moment deadline, const Condition& stop,
             const std::function<bool()>& ready) {
    const auto isOver = [&session, &ready] {
        const std::lock_guard lock(session.mutex);
        return ready() || !session.lost.empty();
    };
    while (true) {
        bool any = false;
        short events = POLLIN;
        {
            const std::lock_guard lock(session.mutex);
            any = receive(session);
            flush(session);
            events = session.outgoing.empty() ? POLLIN : POLLIN | POLLOUT;
        }
        if (any) {
            CLOCK_Notify();
        }
        const bool late = any && CLOCK_Now() >= deadline; // there may be no end of what comes
        if (late || isOver() ||
            waitDescriptor(session.descriptor, events, deadline,
                           [&stop, &isOver] { return (stop && stop()) || isOver(); }) == 0) {
            const std::lock_guard lock(session.mutex);
            return ready();
        }
    }
}

size_t readBytes(Session& session, std::span<uint8_t> buffer, Moment deadline,
                 const Condition& stop) {
    const size_t most = std::min(buffer.size(), kMostReceived);
    waitFor(session, deadline, stop, [&session, most] { return session.received.size() >= most; });
    const std::lock_guard lock(session.mutex);
    const size_t count = std::min(buffer.size(), session.received.size());
    const auto end = session.received.begin() + static_cast<ptrdiff_t>(count);
    std::copy(session.received.begin(), end, buffer.begin());
    session.received.erase(session.received.begin(), end);
    return count;
}

bool writeBytes(Session& session, std::span<const uint8_t> bytes) {
    if (!waitFor(session, CLOCK_After(kWriteStallMs), {},
                 [&session] { return !session.suspended && session.lost.empty(); })) {
        return false;
    }
    {
        const Moment now = CLOCK_Now();
        const std::lock_guard lock(session.mutex);
        telnetAppendData(session.outgoing, bytes);
        const int64_t lineUs = static_cast<int64_t>(bytes.size()) * kBitsPerByte * 1'000'000 /
                               std::max<uint32_t>(session.rate, 1);
        session.lineFree.us = std::max(session.lineFree, now).us + (session.rate ? lineUs : 0);
    }
    return waitFor(session, CLOCK_After(kWriteStallMs), {},
                   [&session] { return session.outgoing.empty() && session.lost.empty(); });
}

// They leave while their answers are awaited.
void ask(Session& session, const std::vector<Setting>& settings) {
    const std::lock_guard lock(session.mutex);
    session.answers.clear();
    for (const Setting& setting : settings) {
        telnetAppendSetting(session.outgoing, setting.command, setting.value);
    }
}

// The server's answer to a setting that has been sent; empty when none came in time.
std::vector<uint8_t> awaitAnswer(Session& session, const Setting& setting) {
    std::vector<uint8_t> value;
    const Moment asked = CLOCK_Now();
    waitFor(session, CLOCK_After(kAnswerMs), {}, [&session, &setting, &value] {
        return !value.empty() || claimAnswer(session, setting, value);
    });
    if (!value.empty()) {
        const std::lock_guard lock(session.mutex);
        session.roundTripUs = std::max(session.roundTripUs, CLOCK_Now().us - asked.us);
    }
    return value;
}

Setting controlSetting(uint8_t value) {
    if (value == CONTROL_NO_FLOW_CONTROL) {
        return {COMPORT_SET_CONTROL, {value}, 0, 3};
    }
    const bool isDtr = value <= CONTROL_DTR_OFF;
    return {COMPORT_SET_CONTROL,
            {value},
            isDtr ? CONTROL_DTR_ON : CONTROL_RTS_ON,
            isDtr ? CONTROL_DTR_OFF : CONTROL_RTS_OFF};
}

bool refuse(Session& session, const std::string& reason) {
    const std::lock_guard lock(session.mutex);
    session.refusal = reason;
    return false;
}

bool setControl(Session& session, ComPortControl control, const char* name) {
    const Setting setting = controlSetting(control);
    ask(session, {setting});
    const std::vector<uint8_t> answer = awaitAnswer(session, setting);
    if (answer == setting.value) {
        return true;
    }
    return refuse(session,
                  formatText("the port server %s %s",
                             answer.empty() ? "does not confirm" : "refuses to set", name));
}

// Learns the rate in force where the server tells; what was written before has left.
uint32_t rateBefore(Session& session) {
    Moment lineFree;
    uint32_t rate = 0;
    {
        const std::lock_guard lock(session.mutex);
        lineFree = session.lineFree;
        rate = session.rate;
    }
    CLOCK_Wait(lineFree, [] { return false; });
    if (rate != 0) {
        return rate;
    }
    const Setting question{COMPORT_SET_BAUDRATE, comPortRateBytes(0)};
    ask(session, {question});
    return comPortRate(awaitAnswer(session, question));
}

bool takeRate(Session& session, const Setting& setting, uint32_t wanted) {
    const std::vector<uint8_t> answer = awaitAnswer(session, setting);
    if (answer.empty()) {
        return refuse(session, "the port server does not confirm the rate");
    }
    const uint32_t actual = comPortRate(answer);
    {
        const std::lock_guard lock(session.mutex);
        session.rate = actual;
    }
    return SERIALPORT_IsRateClose(actual, wanted) ||
           refuse(session, formatText("a rate of %u Bd is not possible, the port server uses %u Bd",
                                      wanted, actual));
}

// All settings go out together and each answer is awaited. A server whose device has no control
// lines may leave those unanswered; framing and rate must be right.
std::optional<uint32_t> configure(Session& session, const LineSettings& settings) {
    if (const std::string problem = SERIALPORT_SettingsProblem(settings); !problem.empty()) {
        refuse(session, problem);
        return std::nullopt;
    }
    const uint32_t before = rateBefore(session);
    const Setting rate{COMPORT_SET_BAUDRATE, comPortRateBytes(settings.baudrate)};
    const Setting framing[] = {
        {COMPORT_SET_DATASIZE, {8}}, {COMPORT_SET_PARITY, {1}}, {COMPORT_SET_STOPSIZE, {1}}};
    std::vector<Setting> controls{controlSetting(CONTROL_NO_FLOW_CONTROL)};
    if (!settings.keepLines) {
        controls.insert(controls.end(),
                        {controlSetting(CONTROL_DTR_OFF), controlSetting(CONTROL_RTS_ON)});
    }
    std::vector<Setting> all{rate};
    all.insert(all.end(), std::begin(framing), std::end(framing));
    all.insert(all.end(), controls.begin(), controls.end());
    ask(session, all);
    bool accepted = takeRate(session, rate, settings.baudrate);
    for (const Setting& setting : framing) {
        if (accepted && awaitAnswer(session, setting) != setting.value) {
            accepted = refuse(session, "the port server does not confirm 8 data bits without "
                                       "parity and one stop bit");
        }
    }
    for (const Setting& setting : controls) {
        if (!accepted || awaitAnswer(session, setting).empty()) {
            break;
        }
    }
    return accepted ? std::optional(before != 0 ? before : settings.baudrate) : std::nullopt;
}

// Agrees with the server on what the port needs; false with the reason.
bool negotiate(Session& session, std::string& error) {
    {
        const std::lock_guard lock(session.mutex);
        telnetBegin(session.negotiation, session.outgoing);
    }
    const TelnetOptionState& comPort = session.negotiation.ours[TELNET_COM_PORT];
    const TelnetOptionState& sending = session.negotiation.ours[TELNET_BINARY];
    const TelnetOptionState& receiving = session.negotiation.theirs[TELNET_BINARY];
    const auto refused = [&] { return comPort.refused || sending.refused || receiving.refused; };
    const auto agreed = [&] { return comPort.on && sending.on && receiving.on; };
    waitFor(session, CLOCK_After(kNegotiateMs), {}, [&] { return refused() || agreed(); });
    const std::lock_guard lock(session.mutex);
    if (agreed()) {
        return true;
    }
    if (comPort.refused) {
        error = "the server refuses control of the port (RFC 2217)";
    } else if (refused()) {
        error = "the server refuses binary transmission";
    } else {
        error = !session.lost.empty() ? session.lost
                                      : "what answers there is no port server (RFC 2217)";
    }
    return false;
}

SerialPortPtr makePort(const std::shared_ptr<Session>& session) {
    auto port = std::make_shared<SerialPort>();
    port->read = [session](std::span<uint8_t> buffer, Moment deadline, const Condition& stop) {
        return readBytes(*session, buffer, deadline, stop);
    };
    port->waitReadable = [session](Moment deadline, const Condition& stop) {
        return waitFor(*session, deadline, stop, [&session] { return !session->received.empty(); });
    };
    port->write = [session](std::span<const uint8_t> bytes) { return writeBytes(*session, bytes); };
    port->configure = [session](const LineSettings& settings) {
        return configure(*session, settings);
    };
    port->setDtr = [session](bool on) {
        return setControl(*session, on ? CONTROL_DTR_ON : CONTROL_DTR_OFF, "DTR");
    };
    port->setRts = [session](bool on) {
        return setControl(*session, on ? CONTROL_RTS_ON : CONTROL_RTS_OFF, "RTS");
    };
    port->lostReason = [session] {
        const std::lock_guard lock(session->mutex);
        return session->lost;
    };
    port->refusal = [session] {
        const std::lock_guard lock(session->mutex);
        return session->refusal;
    };
    port->roundTripMs = [session] {
        const std::lock_guard lock(session->mutex);
        return session->roundTripUs / 1000;
    };
    port->description = session->name;
    return port;
}

} // namespace

SerialPortPtr RFC2217PORT_Open(const std::string& device, std::string& error) {
    std::string host;
    std::string port;
    if (!tcpParseName("rfc2217://", device, host, port)) {
        error = "a port server is named rfc2217://HOST:PORT";
        return nullptr;
    }
    const auto session = std::make_shared<Session>();
    session->name = device;
    session->descriptor = tcpConnect(host, port, error);
    if (session->descriptor < 0 || !negotiate(*session, error)) {
        return nullptr;
    }
    return makePort(session);
}
