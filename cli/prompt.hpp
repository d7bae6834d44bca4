// The interactive prompt.
#pragma once

#include <vexel/kernel.hpp>

#include "runner.hpp"

// Reads and runs statements from the terminal until the end of input or quit.  A statement may go
// over several lines: it ends at its terminator, or at the end of a line in which nothing is open.
// The history is kept between runs; Tab completes names and entry points; ?TEXT lists the names
// that contain TEXT.
// Statements of standard input as they come, for a program at the other end of a pipe: each gives
// one line of JSON, {"done": true} if it prints no value.
void serveStatements(vexel::Kernel& kernel, Runner& runner);

void runPrompt(vexel::Kernel& kernel, Runner& runner, bool quiet);
