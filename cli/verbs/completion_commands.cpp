#include "verbs/completion_commands.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "answer/streams.h"
#include "parser/completion.h"
#include "verbs/common_verbs.h"

namespace zelkctl
{
namespace
{

// The shell splits at blanks, and at each of COMP_WORDBREAKS besides: words that touch are one. What it splits it also
// completes piece by piece, so what stands before the last piece is taken off the candidates. Inside quotation marks it
// splits nothing and wants candidates as they are.
constexpr const char* BASH_SCRIPT = R"(_zelkctl() {
    local line=${COMP_LINE:0:COMP_POINT} words=() word rest plain candidate i
    line=${line#"${COMP_WORDS[0]}"}
    for ((i = 1; i <= COMP_CWORD; i++)); do
        rest=${line#"${line%%[![:space:]]*}"}
        word=${COMP_WORDS[i]}
        ((i < COMP_CWORD)) || word=$rest
        if ((${#words[@]} == 0)) || [[ $rest != "$line" || -z $rest ]]; then
            words+=("$word")
        else
            words[-1]+=$word
        fi
        line=${rest#"$word"}
    done

    local raw=${words[-1]} plains=()
    for word in "${words[@]}"; do
        plain=
        case $word in
            [\"\']*) plain=${word#?} plain=${plain%"${word:0:1}"} ;;
            *)
                while [[ $word =~ ^([^\\]*)\\(.)(.*)$ ]]; do
                    plain+=${BASH_REMATCH[1]}${BASH_REMATCH[2]}
                    word=${BASH_REMATCH[3]}
                done
                plain+=$word
                ;;
        esac
        plains+=("$plain")
    done

    COMPREPLY=()
    while IFS= read -r candidate; do
        case $raw in
            [\"\']*) ;;
            *)
                printf -v candidate %q "$candidate"
                [[ $COMP_WORDBREAKS != *:* ]] || candidate=${candidate#"${raw%"${raw##*:}"}"}
                ;;
        esac
        COMPREPLY+=("$candidate")
    done < <("${COMP_WORDS[0]}" __complete -- "${plains[@]}" 2>/dev/null)
}
complete -o default -F _zelkctl zelkctl zelkctl.exe
)";

// Windows PowerShell drops empty arguments, so a word that is yet to come is told by the mark before the words.
constexpr const char* POWERSHELL_SCRIPT =
    R"(Register-ArgumentCompleter -Native -CommandName zelkctl, zelkctl.exe -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)
    $elements = @($commandAst.CommandElements | Where-Object { $_.Extent.StartOffset -lt $cursorPosition })
    $words = @($elements | Select-Object -Skip 1 | ForEach-Object {
        if ($_ -is [System.Management.Automation.Language.StringConstantExpressionAst]) { $_.Value } else { $_.Extent.Text }
    })
    $mark = if ($elements[-1].Extent.EndOffset -lt $cursorPosition -or $words.Count -eq 0) { '--next' } else { '--' }
    $encoding = [Console]::OutputEncoding
    try {
        [Console]::OutputEncoding = New-Object System.Text.UTF8Encoding $false
        $candidates = @(& $commandAst.GetCommandName() __complete $mark @words 2>$null)
    } finally {
        [Console]::OutputEncoding = $encoding
    }
    foreach ($candidate in $candidates) {
        $text = $candidate
        if ($text -match '[^\w:./\\-]') { $text = "'" + $text.Replace("'", "''") + "'" }
        [System.Management.Automation.CompletionResult]::new($text, $candidate, 'ParameterValue', $candidate)
    }
}
)";

void AddScript(Command noun, const CommandHelp& help, const std::string& sInstallation, const char* pszScript)
{
    Command verb = noun.AddVerb(help);
    verb.AddRemark(sInstallation);
    verb.Answers({}, [pszScript] { return Answer{.value = {}, .text = pszScript}; });
}

/// With the prefix that the user has begun with, such as "name:".
std::vector<std::string> ValuesOfArgument(const std::string& sArgument, const std::string& sBegun)
{
    constexpr std::string_view PREFIX = "name:";
    if (sArgument != ADAPTER_ARGUMENT)
        return {};
    auto names = AdapterNames();
    if (sBegun.starts_with(PREFIX))
        for (std::string& sName : names)
            sName.insert(0, PREFIX);
    return names;
}

} // namespace

void AddCompletionCommands(Command tool)
{
    Command noun =
        tool.AddNoun({"completion", "Completion of commands, options and adapters in a shell", "completion bash"});
    AddScript(noun, {"bash", "Print the script for bash", "completion bash > ~/.zelkctl-completion"},
              "Load the file in ~/.bashrc with the line:\n  . ~/.zelkctl-completion", BASH_SCRIPT);
    AddScript(
        noun,
        {"powershell", "Print the script for PowerShell", "completion powershell | Out-String | Invoke-Expression"},
        "Add this line to the file that $PROFILE names to load it in every session.", POWERSHELL_SCRIPT);
}

void AnswerCompletion(const CLI::App& tool, const std::vector<std::string>& arguments) noexcept
try
{
    // "__complete -- WORDS": the last word is being completed. "__complete --next WORDS": one that is yet to come.
    std::vector<std::string> words(arguments.begin() + std::min<std::ptrdiff_t>(2, std::ssize(arguments)),
                                   arguments.end());
    if (arguments.size() > 1 && arguments[1] == "--next")
        words.emplace_back();
    std::string text;
    for (const std::string& sCandidate : Complete(tool, words, ValuesOfArgument))
        text += sCandidate + '\n';
    WriteData(text);
}
catch (...)
{
    // A shell has no place for messages.
}

} // namespace zelkctl
