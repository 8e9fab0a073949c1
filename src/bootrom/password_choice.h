// Which password a boot ROM is offered: that of a blank chip, the user's, the one in the loaded
// file. User-interface thread.
#pragma once

#include "bootrom/family.h"

#include <string>
#include <vector>

// What the boot ROM says, or does not say, when it refuses one.
inline constexpr const char* kPasswordRefused = "Password checksum failed";

struct BootPassword {
    enum class Origin { blankChip, user, programmed, image } origin = Origin::user;
    uint32_t adrCount = 0; // as the image sees them
    uint32_t adrCompare = 0;
    std::vector<uint8_t> bytes; // of a blank chip: none, the family fills
    std::string places = {};    // in the image: "FFC1 - FFC8"
};

// The chip holds the loaded file from here on. Another build may hold another password, and is the
// loaded file when the chip still asks for this one.
void noteProgrammedPassword();
void forgetProgrammedPassword();
// The passwords to try one after the other, by the last flash checksum, the user's settings, what
// was programmed last and the loaded file. Empty: the user has to be asked.
std::vector<BootPassword> passwordsToTry(const BootRomProtocol& family);
// The first of them, or the user's: what a command sends that tries only one.
BootPassword passwordInForce();
// Has passwordInForce give this one while it exists.
class PasswordOffer {
public:
    explicit PasswordOffer(const BootPassword& password);
    ~PasswordOffer();
    PasswordOffer(const PasswordOffer&) = delete;
    PasswordOffer& operator=(const PasswordOffer&) = delete;
};
// What the device asks for and what it was offered: the hint of a refusal.
Hint passwordHint();
// The result of what a boot ROM answers to a password, with that hint where it is a failure.
Result<> afterPassword(const Result<>& answered);
// Whether the failure of a download may be a refused password.
bool mayBeRefusal(const Failure& failure);
