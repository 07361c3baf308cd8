#include "support/Log.h"

#include <cstring>
#include <filesystem>
#include <iostream>

// Writes each argument as one log entry and prints where the log lives;
// lets tests run the log under another user or environment. The argument
// "--remove-log" removes the file between two entries instead.
int main(int argc, char **argv)
{
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--remove-log") == 0)
            std::filesystem::remove(Log::url());
        else
            Log::write(argv[i]);
    }
    std::cout << Log::url().string() << std::endl;
    return 0;
}
