#pragma once

/// Makes the platform calls of one reading of the machine, in its order, and does nothing with what they give.
void AskForMachine();
