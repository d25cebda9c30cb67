#pragma once

#include <cstdio>
#include <unistd.h>

/// The memory that the process has in use now, MiB (/proc/self/statm, proc(5)).
inline double residentMemory()
{
    long all = 0;
    long resident = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%ld %ld", &all, &resident) != 2)
            std::perror("/proc/self/statm");
        std::fclose(file);
    }
    return double(resident) * double(sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}
