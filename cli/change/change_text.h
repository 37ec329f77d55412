#pragma once

#include <string>

#include <state/apply/apply.h>

namespace zelkctl
{

// How people read a plan, and what has become of it.

/// What people call an item of an adapter, such as "ipv4.addresses", or of the machine.
std::string LabelOf(const std::string& sPath);

/// What differs and the steps that would be taken; empty when nothing differs.
std::string TextOf(const zelk::Plan& plan);

/// The steps and what has become of each, those that were taken back, and what is not as wanted.
std::string TextOf(const zelk::ApplyResult& result);

/// The steps that were taken back, and what is not as before.
std::string TextOf(const zelk::Undo& undo);

/// What is being waited for.
std::string TextOf(const zelk::Progress& progress);

} // namespace zelkctl
