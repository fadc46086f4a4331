#pragma once

/// Prints where the time of a request goes: its way hop by hop, what the process calls of the
/// system meanwhile, and how its waits end. The result is that of the program.
int printProfile(int rounds, int perRound);
