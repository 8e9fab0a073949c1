// What is made of the one table of options and commands for others to read: man pages, completions
// for shells, the tables of the documents. Pure: texts out.
#pragma once

#include <string>
#include <vector>

// An option, command or word as readers meet it.
struct ReferenceRow {
    std::string name;     // with what it begins with, "-OptionsCOMPort"
    std::string argument; // "<PORT>"; empty: takes none
    std::string effect;   // "Sets COM-port of PC"
    std::string note;     // may be empty, in the form of the documents (Markdown)
    bool isGlued = true;  // the argument stands directly behind the name
    bool standsAlone = false;
};

std::vector<ReferenceRow> REFERENCE_Options();
std::vector<ReferenceRow> REFERENCE_Commands();
std::vector<ReferenceRow> REFERENCE_Words();
std::vector<ReferenceRow> REFERENCE_SimOptions();

std::string REFERENCE_ManPage();
std::string REFERENCE_SimManPage();
std::string REFERENCE_Bash();
std::string REFERENCE_Zsh();
std::string REFERENCE_Fish();
std::string REFERENCE_SimBash();
std::string REFERENCE_SimZsh();
std::string REFERENCE_SimFish();
// The document with its generated parts, those between "<!-- begin NAME -->" and "<!-- end NAME
// -->", as they are to be.
std::string REFERENCE_Document(const std::string& document);
