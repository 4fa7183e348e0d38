#pragma once

#include <viewer/cli/CommandLine.h>

/// The program from its arguments to its exit status.
class Program
{
public:
    /// What the process was started with.
    Program(int argc, char** argv);
    /// Runs the command: 0 done, 1 failed (with one line on standard error), 2 wrong usage (likewise).
    int run();

private:
    int execute(const Command& command);

    int m_argc;
    char** m_argv;
};
