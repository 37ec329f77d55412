#include "system/whole_file.h"

#include <algorithm>

#include "system/handles.h"
#include "system/system_error.h"
#include "system/utf8.h"

namespace zelkctl
{
namespace
{

/// Goes with its file unless that was moved away.
class FileBeside
{
public:
    explicit FileBeside(const std::wstring& sPath)
        : m_sPath(sPath), m_sBeside(sPath + L'.' + std::to_wstring(::GetCurrentProcessId()) + L".new")
    {
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;
    ~FileBeside()
    {
        if (!m_bMoved)
            ::DeleteFileW(m_sBeside.c_str());
    }

    void Write(std::string_view content) const
    {
        constexpr std::size_t PIECE = 16 << 20; // more at once fails on some network shares
        const UniqueHandle file = OwnFile(
            ::CreateFileW(m_sBeside.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        Require(file != nullptr);
        while (!content.empty())
        {
            DWORD dwWritten = 0;
            Require(::WriteFile(file.get(), content.data(), static_cast<DWORD>(std::min(content.size(), PIECE)),
                                &dwWritten, nullptr));
            content.remove_prefix(dwWritten);
        }
        Require(::FlushFileBuffers(file.get()));
    }

    void Move()
    {
        m_bMoved = ::MoveFileExW(m_sBeside.c_str(), m_sPath.c_str(),
                                 MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE;
        Require(m_bMoved);
    }

private:
    void Require(bool bDone) const
    {
        if (!bDone)
            throw SystemError("writing " + ToUtf8(m_sPath));
    }

    std::wstring m_sPath;
    std::wstring m_sBeside;
    bool m_bMoved = false;
};

} // namespace

void WriteWholeFile(const std::wstring& sPath, std::string_view content)
{
    FileBeside file(sPath);
    file.Write(content);
    file.Move();
}

} // namespace zelkctl
