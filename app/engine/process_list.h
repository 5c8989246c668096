#ifndef KALMO_APP_ENGINE_PROCESS_LIST_H
#define KALMO_APP_ENGINE_PROCESS_LIST_H

#include <sys/types.h>

#include <string>
#include <string_view>
#include <vector>

#include "framework/xy_string.h"

/// What the machine's processes run and hold, as /proc tells; see proc(5). Nothing is opened for writing, and
/// nothing that a process holds is touched. A process that ends meanwhile, or may not be looked at, is left
/// out.
namespace kalmo {

/// The lines of a file of the kernel's, without their ends; none when it cannot be read.
std::vector<std::string> tabKernelLines(const CTString& csPath);

/// A process and the file that it runs.
struct STProcess {
    int nProcess = 0;
    dev_t unDevice = 0;
    ino_t unInode = 0;
};

/// The processes of the machine that run a file.
std::vector<STProcess> tabProcesses();

/// The process that started a process, or took it over; 0 when there is none.
int nParentProcess(int nProcess);

/// The name of a process, as ps(1) shows it; empty when there is no such process.
CTString csProcessName(int nProcess);

/// Whether systemd counts a process to a service, its name without ".service".
bool bProcessOfService(int nProcess, std::wstring_view svService);

/// The process that holds a socket, by the socket's inode; 0 when none is known to.
int nSocketHolder(unsigned long long ullInode);

}  // namespace kalmo

#endif
