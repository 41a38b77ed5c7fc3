#pragma once

#include "cli/Program.h"

namespace DhcpTool {

/// Exit status of the program, the same for every command.
enum ExitStatus { done = 0, failed = 1, badInput = 2, leaseUnknown = 3, noAnswer = 4 };

inline constexpr Cli::ExitMeaning exitMeanings[] = {
    {done, "Success."},
    {failed, "Wrong usage, or the program failed: the output cannot be written, no route, or no socket."},
    {badInput,
     "The input cannot be read to its end: the capture is missing or damaged, none of the interfaces exists, or one "
     "cannot be opened."},
    {leaseUnknown, "leasequery: the server does not know the client or the address."},
    {noAnswer, "leasequery: the server did not answer."},
};

}  // namespace DhcpTool
