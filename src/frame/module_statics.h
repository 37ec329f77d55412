#pragma once

/// Whether there was memory for the module's static objects. Without them no operation may run.
bool HasModuleStatics() noexcept;
