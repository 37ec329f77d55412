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
    DWORD dwRc = NO_ERROR;
    const auto Call = [](IP_INTERFACE_INFO* pTable, ULONG& ulSize) { return ::GetInterfaceInfo(pTable, &ulSize); };
    // "No data" from the second call means that the last adapter has gone since the first: the zeroed table, which has
    // no entries, then says what there is, and the next question is answered from it.
    if (!m_table.Load(dwRc, Call, ERROR_NO_DATA))
        return FailToLoad(frame, dwRc);
    return frame.Succeed();
}

bool TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList(std::vector<NIC_INFO>& NicList)
{
    const CallFrame frame("TOLVA::Wrap_IP_INTERFACE_INFO::GetAdapterList");
    if (!m_table && !LoadTable())
        return frame.Fail("Failed to load adapter table");

    bool bFailed = false;
    for (const IP_ADAPTER_INDEX_MAP& entry : m_table.Rows())
    {
        NIC_INFO NicInfo;
        // A name that fills its field may have no terminator.
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
