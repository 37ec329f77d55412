// The interface table and the list of adapters, step by step as golden/discovery/steps.json says it.

#include <numeric>

#include <adapters/wrap_ip_interface_info.h>
#include <support/fakes/platform_test.h>
#include <support/registry_json.h>

using namespace testing_support;
using nlohmann::json;

namespace
{

/// In the golden text: what is found, what the platform is asked and what is traced.
class Discovery : public PlatformTest, public testing::WithParamInterface<std::string>
{
protected:
    Discovery()
    {
        ADD_PATCH(patches, RegOpenKeyExW, [this](auto original, HKEY hKey, const wchar_t* pszPath, auto... rest) {
            const bool bMissing = !m_sNoKey.empty() && Show(pszPath).find(m_sNoKey) != std::string::npos;
            return bMissing ? LSTATUS{ERROR_FILE_NOT_FOUND} : original(hKey, pszPath, rest...);
        });
    }

    void Take(const json& step)
    {
        m_sNoKey = step.value("noKey", "");
        Arrange(step);
        if (step.contains("installed"))
        {
            SeedAdapter();
            AddAdapter();
        }
        if (step.contains("friendlyName"))
            Rename(Wide(step["friendlyName"]));
        if (step.contains("interfaces"))
            interfaces.clear();
        for (const std::string sName : step.value("interfaces", json::array()))
            interfaces.push_back(Wide(sName));
        if (step.contains("count"))
            claimedInterfaces = step["count"].get<LONG>();
        if (step.contains("size"))
            claimedSize = step["size"].get<ULONG>();
        if (step.contains("records"))
            m_records.clear();
        for (const json& record : step.value("records", json::array()))
            m_records.push_back(Record(record));
        if (const std::string sAsk = step.value("ask", ""); !sAsk.empty())
            Tell(step["title"], [&] { return Answer(sAsk); });
    }

private:
    /// Of its texts in their order.
    static TOLVA::NIC_INFO Record(const json& record)
    {
        const auto text = [&](std::size_t i) { return velmor::string(Wide(record[i])); };
        return {text(0), text(1), text(2), text(3), text(4), text(5), text(6), text(7)};
    }
    void Rename(const std::wstring& sName)
    {
        m_sFriendlyName = sName;
        adapters[0].record.FriendlyName = m_sFriendlyName.data();
        adapters[0].record.PhysicalAddressLength = 6;
        std::iota(adapters[0].record.PhysicalAddress, adapters[0].record.PhysicalAddress + 6, BYTE{10});
    }
    std::string Answer(const std::string& sAsk)
    {
        if (sAsk == "CanChangeAdapterOptions")
        {
            TOLVA::NIC_INFO NicInfo = Adapter();
            NicInfo.sNicPci = L"PCI\\DEV_X";
            bool bAnswer = true;
            return Show(TOLVA::CanChangeAdapterOptions(NicInfo, bAnswer), bAnswer);
        }
        if (sAsk == "GetAdapterList")
            return Show(TOLVA::GetAdapterList(m_records), m_records);
        if (sAsk == "load" || sAsk == "list anew")
            m_table = std::make_unique<TOLVA::Wrap_IP_INTERFACE_INFO>();
        if (sAsk == "load")
            return Show(m_table->LoadTable());
        std::vector<TOLVA::NIC_INFO> list;
        return Show(m_table->GetAdapterList(list), list);
    }

    std::string m_sNoKey; ///< keys with this in their path are missing
    std::wstring m_sFriendlyName;
    std::vector<TOLVA::NIC_INFO> m_records; ///< that are to be completed
    std::unique_ptr<TOLVA::Wrap_IP_INTERFACE_INFO> m_table;
};
INSTANTIATE_TEST_SUITE_P(, Discovery, testing::ValuesIn(NamesIn(StepsOf("discovery"))),
                         [](const auto& param) { return param.param; });

TEST_P(Discovery, Takes)
{
    const json steps = StepsOf("discovery")[GetParam()];
    for (const json& step : steps)
        Take(step);
}

} // namespace
