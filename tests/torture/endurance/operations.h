#pragma once

#include <string>
#include <vector>

#include <zelk_nm/tolva.h>

namespace torture
{

/// One use of an operation of the library. Its answer is the result and the outputs, as text.
struct Operation
{
    const char* name;
    std::string (*run)(const TOLVA::NIC_INFO& adapter);
};

/// All that read or convert.
const std::vector<Operation>& ReadingOperations();
/// All that change the configuration. They leave it as the next round finds it.
const std::vector<Operation>& ChangingOperations();

/// The adapters of this machine, two at least, with all settings that the registry can hold of one, and, from now on,
/// commands and a device installer that accept everything and do nothing. The registry stays changed.
std::vector<TOLVA::NIC_INFO> MakeAdapters();

} // namespace torture
