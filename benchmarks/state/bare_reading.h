#pragma once

/// Makes the platform calls of one reading of the machine, in its order, and does nothing with what they give.
void AskForMachine();

/// Likewise without the names of the machine, which a list of adapters does not need.
void AskForRunningSystem();
