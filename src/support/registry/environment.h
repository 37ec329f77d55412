#pragma once

#include <winsock2.h>

#include <windows.h>

#include <zelk_nm/string.h>

/// What the library knows of the Windows that it runs on. Everything is zero or empty until the detection has run.
struct WindowsEnvironment
{
    unsigned long ulCode = 0;      ///< the kind of system as a small number; 0 for an unknown one
    OSVERSIONINFOEXW version = {}; ///< from major version 6 on with the numbers that the registry gives
    OSVERSIONINFOEXA narrowVersion = {};
    bool bX64 = false;
    bool bWorkstation = false;
    bool bDomainController = false;
    bool bServerCore = false;
    bool bMiniNT = false;
    velmor::string sProductName;
    velmor::string sServicePack;
};

/// Works out the environment and replaces what an earlier run found. Nothing is reported: what cannot be read keeps its
/// default.
void DetectWindowsEnvironment() noexcept;

/// The environment code; runs the detection if it has found none yet.
unsigned long GetWindowsEnvironment() noexcept;

/// The system's major version; runs the detection if it has not run yet.
unsigned long GetWindowsMajorVersion() noexcept;

/// What the last detection found.
const WindowsEnvironment& GetDetectedEnvironment() noexcept;
