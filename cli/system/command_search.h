#pragma once

namespace zelkctl
{

/// From now on programs that this process starts by their names are looked for in the system's directory first: one
/// that is planted in the current directory, or in a directory that comes earlier in the path, is not found before it.
void SearchSystemDirectoryFirst();

} // namespace zelkctl
