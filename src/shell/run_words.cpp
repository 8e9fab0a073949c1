#include "shell/run_words.h"

RunWords& RUNWORDS_Get() {
    static RunWords words;
    return words;
}
