#pragma once

/// Starts the program and runs it to its end; the result is the process's exit status. If an
/// instance runs already, that one is brought to the front and this start ends with 0.
int startQuarn(int argc, char** argv);
