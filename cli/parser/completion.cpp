#include "parser/completion.h"

#include <algorithm>
#include <string_view>

#include <CLI/CLI.hpp>

#include "system/utf8.h"

namespace zelkctl
{
namespace
{

bool IsOption(const std::string& sWord)
{
    return sWord.starts_with('-');
}

/// The values that the option's check admits. The parser tells them only as the text of a type: "TEXT:{bash,dash}".
std::vector<std::string> AdmittedValues(const CLI::Option& option)
{
    const std::string sType = option.get_type_name();
    const std::size_t begin = sType.find('{');
    const std::size_t end = sType.rfind('}');
    if (begin == std::string::npos || end == std::string::npos)
        return {};
    return CLI::detail::split(sType.substr(begin + 1, end - begin - 1), ',');
}

/// Goes through the words of a command line as the parser does, down the tree of commands.
class Walk
{
public:
    Walk(const CLI::App& command, const ValuesOf& valuesOf) : m_pCommand(&command), m_pValuesOf(&valuesOf) {}

    void Pass(const std::string& sWord)
    {
        if (m_pAwaiting != nullptr)
            m_pAwaiting = nullptr;
        else if (IsOption(sWord))
            PassOption(sWord);
        else if (const CLI::App* pCommand = FindCommand(sWord))
            *this = Walk(*pCommand, *m_pValuesOf);
        else
            ++m_arguments;
    }

    [[nodiscard]] std::vector<std::string> Candidates(const std::string& sBegun) const
    {
        if (m_pAwaiting != nullptr)
            return Values(*m_pAwaiting, sBegun);
        if (IsOption(sBegun))
            return Options();
        if (const CLI::Option* pArgument = Argument())
            return Values(*pArgument, sBegun);
        auto candidates = Commands();
        return candidates.empty() ? Options() : candidates;
    }

private:
    [[nodiscard]] std::vector<std::string> Values(const CLI::Option& option, const std::string& sBegun) const
    {
        const auto admitted = AdmittedValues(option);
        return admitted.empty() ? (*m_pValuesOf)(option.get_name(true), sBegun) : admitted;
    }

    void PassOption(const std::string& sWord)
    {
        m_passed.push_back(sWord);
        const CLI::Option* pOption = m_pCommand->get_option_no_throw(sWord);
        if (pOption != nullptr && pOption->get_items_expected_min() > 0)
            m_pAwaiting = pOption;
    }

    [[nodiscard]] std::vector<const CLI::App*> Subcommands() const
    {
        return m_pCommand->get_subcommands([](const CLI::App*) { return true; });
    }

    [[nodiscard]] const CLI::App* FindCommand(const std::string& sWord) const
    {
        const auto commands = Subcommands();
        const auto found = std::ranges::find(commands, sWord, &CLI::App::get_name);
        return found != commands.end() ? *found : nullptr;
    }

    [[nodiscard]] std::vector<std::string> Commands() const
    {
        std::vector<std::string> names;
        for (const CLI::App* pCommand : Subcommands())
            names.push_back(pCommand->get_name());
        return names;
    }

    /// Those that were not given yet.
    [[nodiscard]] std::vector<std::string> Options() const
    {
        std::vector<std::string> names;
        for (const CLI::Option* pOption : m_pCommand->get_options())
            for (const std::string& sName : pOption->get_lnames())
                if (!pOption->get_group().empty() && std::ranges::find(m_passed, "--" + sName) == m_passed.end())
                    names.push_back("--" + sName);
        return names;
    }

    /// The argument whose turn it is; null when there is none.
    [[nodiscard]] const CLI::Option* Argument() const
    {
        std::size_t left = m_arguments;
        for (const CLI::Option* pOption : m_pCommand->get_options())
        {
            if (!pOption->get_positional())
                continue;
            if (left < static_cast<std::size_t>(pOption->get_items_expected_max()))
                return pOption;
            left -= static_cast<std::size_t>(pOption->get_items_expected_max());
        }
        return nullptr;
    }

    const CLI::App* m_pCommand;
    const ValuesOf* m_pValuesOf;
    const CLI::Option* m_pAwaiting = nullptr; ///< whose value comes next
    std::vector<std::string> m_passed;        ///< options of the command
    std::size_t m_arguments = 0;
};

} // namespace

std::vector<std::string> Complete(const CLI::App& tool, const std::vector<std::string>& words, const ValuesOf& valuesOf)
{
    if (words.empty())
        return {};
    const std::string& sBegun = words.back();
    Walk walk(tool, valuesOf);
    std::for_each(words.begin(), words.end() - 1, [&](const std::string& sWord) { walk.Pass(sWord); });
    auto candidates = walk.Candidates(sBegun);
    std::erase_if(candidates, [&](const std::string& sCandidate) {
        return !EqualIgnoringCase(sCandidate.substr(0, sBegun.size()), sBegun);
    });
    return candidates;
}

} // namespace zelkctl
