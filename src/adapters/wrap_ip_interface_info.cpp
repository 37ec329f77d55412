#include <adapters/wrap_ip_interface_info.h>

#include <cwchar>
#include <string>

#include <support/trace/call_frame.h>

namespace
{

bool FailToLoad(const CallFrame& frame, DWORD dwRc)
{
    if (dwRc != ERROR_NO_DATA)
        return frame.Fail("GetInterfaceInfo failed", "dwRc", dwRc);
    frame.Ending(TRACE_WARNING,
                 "GetInterfaceInfo failed - There are no network adapters enabled for IPv4 on the local system");
    return false;
}

/// Cuts the device name down to the GUID in braces. False when it has none.
bool ExtractGuid(const CallFrame& frame, velmor::string& sName)
{
    const std::size_t opening = sName.find(L'{');
    if (opening == velmor::string::npos)
        return frame.FailAs("Couldn't find leading '{' in device name");
    sName.erase(0, opening);

    const std::size_t closing = sName.find(L'}');
    if (closing == velmor::string::npos)
        return frame.FailAs("Couldn't find trailing '}' in device name");
    sName.erase(closing + 1);
    return true;
}

} // namespace

bool TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable()
{
    const CallFrame frame("TOLVA::Wrap_IP_INTERFACE_INFO::LoadTable");
    m_pInterfaceInfo = nullptr;

    DWORD dwRc = NO_ERROR;
    const bool bLoaded = velmor::AskThenCall(m_buffer, dwRc, [this](void* pTable, ULONG& ulSize) {
        m_pInterfaceInfo = static_cast<IP_INTERFACE_INFO*>(pTable);
        return ::GetInterfaceInfo(m_pInterfaceInfo, &ulSize);
    });
    const bool bWhole = velmor::HoldsEntries(m_buffer, &IP_INTERFACE_INFO::NumAdapters, &IP_INTERFACE_INFO::Adapter);
    if (bLoaded && bWhole)
        return frame.Succeed();

    // A second answer "no data" leaves the zeroed table, which reads as empty. That is meant.
    if (!bWhole || dwRc != ERROR_NO_DATA)
        m_pInterfaceInfo = nullptr;
    return FailToLoad(frame, bLoaded ? ERROR_INVALID_DATA : dwRc);
}

bool TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList(std::vector<NIC_INFO>& NicList)
{
    const CallFrame frame("TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList");
    if (m_pInterfaceInfo == nullptr && !LoadTable())
        return frame.Fail("Failed to load adapter table");

    bool bFailed = false;
    for (LONG i = 0; i < m_pInterfaceInfo->NumAdapters; ++i)
    {
        const IP_ADAPTER_INDEX_MAP& entry = m_pInterfaceInfo->Adapter[i];
        NIC_INFO NicInfo;
        NicInfo.sNicName = velmor::string(entry.Name, ::wcsnlen(entry.Name, std::size(entry.Name)));
        frame.Verbose("NicInfo.sNicName", NicInfo.sNicName);
        NicInfo.sNicGuid = NicInfo.sNicName;
        if (ExtractGuid(frame, NicInfo.sNicGuid))
            NicList.push_back(NicInfo);
        else
            bFailed = true;
    }
    if (bFailed)
        return frame.Fail("Failed to obtain adapter information for one or more adapters");
    return frame.Succeed();
}
