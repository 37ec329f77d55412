#pragma once

#include <zelk_nm/ip_address.h>

namespace velmor
{

/// The address's text without port and scope. On failure `sText` is unchanged and `code` is Winsock's. The conversion
/// of ip_address throws that code; what only traces an address does without the exception.
bool FormatAddress(const ip_address& address, velmor::string& sText, int& code);

} // namespace velmor
