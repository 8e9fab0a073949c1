// What the program answers without doing anything: lines on standard output, made to be read by
// people and by scripts. Each returns the exit code. Nothing is written elsewhere.
#pragma once

#include <string>

// Where settings, projects, logs, devices and the program itself are, a line each.
int INQUIRY_Paths(const std::string&);
// The ports that are present, a line each with two blanks between path, COM number, maker and
// product, serial number, and the name that stays with the adapter; "-" stands for what there is
// not.
int INQUIRY_Ports(const std::string&);
// The devices that can be selected, a line each: name, maker, blocks and bytes of flash.
int INQUIRY_Devices(const std::string&);
// Whether a device description can be used and its RAM loader is there; 0 when both are so.
int INQUIRY_CheckDevice(const std::string& file);
