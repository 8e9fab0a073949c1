#include "bootrom/password_choice.h"

#include "bootrom/handshake.h"
#include "data/hexdata.h"
#include "device/device.h"
#include "link/password.h"
#include "platform/format.h"

#include <algorithm>
#include <optional>

namespace {

const BootPassword* offered = nullptr;

struct ProgrammedPassword {
    std::string device;
    BootPassword password;
};
std::optional<ProgrammedPassword> programmed;

std::optional<uint8_t> imageByte(uint32_t address) {
    uint32_t found = address;
    const uint8_t* data = nullptr;
    return HEXDATA_GetData(found, data) != 0 && found == address ? std::optional(*data)
                                                                 : std::nullopt;
}

std::string spanOf(const std::vector<uint32_t>& places) {
    return formatText("%X - %X", std::ranges::min(places), std::ranges::max(places));
}

// Where the chip has its password, as the image sees it; empty where nobody can tell.
std::vector<uint32_t> passwordPlaces(const BootRomProtocol& family) {
    std::vector<uint32_t> places = DEVICE_Selected().aIDAdr;
    if (!places.empty() || DEVICE_GetPWAreaLen() == 0) {
        return places;
    }
    uint32_t start = DEVICE_RelocateAddr(DEVICE_GetPWAreaStart());
    size_t length = family.passwordLength;
    if (length == 0) {
        start = DEVICE_RelocateAddr(PASSWORD_GetAdrCompare());
        length = imageByte(DEVICE_RelocateAddr(PASSWORD_GetAdrCount())).value_or(0);
    }
    for (size_t i = 0; i < length; ++i) {
        places.push_back(start + static_cast<uint32_t>(i));
    }
    return places;
}

BootPassword blankChipsPassword() {
    return {BootPassword::Origin::blankChip, DEVICE_GetPWAreaStart(), DEVICE_GetPWAreaStart(), {}};
}

BootPassword usersPassword() {
    return {BootPassword::Origin::user, DEVICE_RelocateAddr(PASSWORD_GetAdrCount()),
            DEVICE_RelocateAddr(PASSWORD_GetAdrCompare()), PASSWORD_GetBytes()};
}

// The password that the loaded file would give the chip; none when it does not hold all of it.
std::optional<BootPassword> imagesPassword(const BootRomProtocol& family) {
    const std::vector<uint32_t> places = passwordPlaces(family);
    BootPassword password = usersPassword();
    password.origin = BootPassword::Origin::image;
    password.bytes.clear();
    for (const uint32_t place : places) {
        const std::optional<uint8_t> byte = imageByte(place);
        if (!byte) {
            return std::nullopt;
        }
        password.bytes.push_back(*byte);
    }
    if (places.empty()) {
        return std::nullopt;
    }
    password.places = spanOf(places);
    return password;
}

// "12 bytes at 1FFF4 - 1FFFF", as far as the description and the settings tell.
std::string whatIsAsked() {
    const BootRomProtocol* family = currentProtocol();
    const auto places = family != nullptr ? passwordPlaces(*family) : std::vector<uint32_t>();
    if (!places.empty()) {
        return formatText("%zu bytes at %s", places.size(), spanOf(places).c_str());
    }
    const PasswordLimits limits = PASSWORD_LimitsOf(DEVICE_Selected());
    if (limits.AreaSize == 0) {
        return formatText("a password of %u to %u bytes", limits.MinLen, limits.MaxLen);
    }
    return formatText("as many bytes from %X on as the byte at %X says, both within %X - %X",
                      PASSWORD_GetAdrCompare(), PASSWORD_GetAdrCount(), limits.AreaStart,
                      limits.AreaStart + limits.AreaSize - 1);
}

std::string whatWasOffered(const BootPassword& password) {
    switch (password.origin) {
    case BootPassword::Origin::blankChip:
        return "that of a blank chip, all FF,";
    case BootPassword::Origin::image:
        return formatText("that of the loaded file (%s)", password.places.c_str());
    case BootPassword::Origin::programmed:
        return formatText("that of what was programmed last (%s)", password.places.c_str());
    default:
        return password.bytes.empty() ? "none"
                                      : formatText("yours of %zu bytes", password.bytes.size());
    }
}

} // namespace

Hint passwordHint() {
    return {Cause::passwordRefused,
            formatText("%s; %s was offered last, and by its checksum the chip is %s",
                       whatIsAsked().c_str(), whatWasOffered(passwordInForce()).c_str(),
                       _IsBlank() ? "blank" : "not blank")};
}

Result<> afterPassword(const Result<>& answered) {
    return answered ? answered : withHint(answered, passwordHint());
}

std::vector<BootPassword> passwordsToTry(const BootRomProtocol& family) {
    std::vector<BootPassword> passwords;
    if (_IsBlank()) {
        passwords.push_back(blankChipsPassword());
    }
    if (PASSWORD_GetLen() != 0) {
        passwords.push_back(usersPassword());
    }
    if (_IsBlank()) {
        return passwords;
    }
    const auto isUsers = [&passwords](const BootPassword& password) {
        return !passwords.empty() && passwords.front().bytes == password.bytes;
    };
    const std::optional<BootPassword> image = imagesPassword(family);
    const bool isKnown = programmed && programmed->device == DEVICE_GetName() &&
                         !isUsers(programmed->password) &&
                         (!image || image->bytes != programmed->password.bytes);
    if (isKnown) {
        passwords.push_back(programmed->password);
    }
    if (image && !isUsers(*image)) {
        passwords.push_back(*image);
    }
    return passwords;
}

void noteProgrammedPassword() {
    programmed.reset();
    if (const std::optional<BootPassword> image = imagesPassword(*currentProtocol())) {
        programmed = {DEVICE_GetName(), *image};
        programmed->password.origin = BootPassword::Origin::programmed;
    }
}

void forgetProgrammedPassword() {
    programmed.reset();
}

BootPassword passwordInForce() {
    if (offered != nullptr) {
        return *offered;
    }
    return _IsBlank() ? blankChipsPassword() : usersPassword();
}

PasswordOffer::PasswordOffer(const BootPassword& password) {
    offered = &password;
}

PasswordOffer::~PasswordOffer() {
    offered = nullptr;
}

bool mayBeRefusal(const Failure& failure) {
    return failure.reason == kPasswordRefused ||
           (failure.reason.empty() && failure.code == TERR_TIMEOUT);
}
