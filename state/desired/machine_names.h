#pragma once

#include <string>

namespace zelk
{

// Each gives the reason why the name cannot be used so, as a sentence, or an empty text.

/// A DNS host name: one label.
std::string RefuseAsComputerName(const std::string& name);
/// A DNS domain; empty for none.
std::string RefuseAsDnsSuffix(const std::string& name);
/// A NetBIOS name of up to 15 characters.
std::string RefuseAsWorkgroup(const std::string& name);
/// What the system allows for a connection.
std::string RefuseAsConnectionName(const std::string& name);
/// Whether the system's commands can be told a connection by this name: without characters that end an argument or
/// separate a parameter from its value, and not a number, which they take for an interface index.
std::string RefuseInCommands(const std::string& name);
/// Whether a command can be told a connection by this name through the command interpreter, in quotation marks: it puts
/// the values of variables in their places.
std::string RefuseInInterpreter(const std::string& name);

} // namespace zelk
