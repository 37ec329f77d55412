// bare_reading: makes the platform calls of "zelkctl adapter list" once and prints nothing.

#include "../state/bare_reading.h"

int main()
{
    AskForRunningSystem();
    return 0;
}
