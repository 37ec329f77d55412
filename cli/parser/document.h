#pragma once

#include <string>

namespace zelkctl
{

/// The text of a document that the user has named for an argument; for "-" the standard input. It may be UTF-8, or
/// UTF-16 with its mark, as programs of this system write one. Throws a usage failure when it cannot be read or has
/// more than 64 MB.
std::string ReadDocument(const std::string& sArgument, const std::string& sFile);

} // namespace zelkctl
