#include <state/reading/read_anew.h>

#include <exception>
#include <memory>
#include <utility>

#include <process.h>

#include <state/platform/handles.h>
#include <state/platform/system_message.h>

namespace zelk
{
namespace
{

/// What the two threads share. It lives until both have left it, so that a wait that fails leaves nothing dangling.
struct Task
{
    ReadOptions options;
    Machine machine;
    std::exception_ptr failure;
};
using SharedTask = std::shared_ptr<Task>;

unsigned int WINAPI Perform(void* argument)
{
    const SharedTask task = *std::unique_ptr<SharedTask>(static_cast<SharedTask*>(argument));
    try
    {
        task->machine = ReadMachine(task->options);
    }
    catch (...)
    {
        task->failure = std::current_exception();
    }
    return 0;
}

[[noreturn]] void Refuse(const char* step)
{
    const DWORD code = ::GetLastError();
    throw StateError({code, step, "The machine cannot be read on a thread of its own", SystemMessage(code)});
}

} // namespace

// Not a future of the standard library: on this platform its wait spins without end once the system refuses to wait.
Machine ReadAnew(const ReadOptions& options)
{
    const auto task = std::make_shared<Task>(Task{options, {}, nullptr});
    auto argument = std::make_unique<SharedTask>(task);
    const UniqueHandle thread(
        reinterpret_cast<HANDLE>(::_beginthreadex(nullptr, 0, Perform, argument.get(), 0, nullptr)));
    if (!thread)
        Refuse("_beginthreadex");
    static_cast<void>(argument.release()); // owned by the thread from here on
    if (::WaitForSingleObject(thread.get(), INFINITE) != WAIT_OBJECT_0)
        Refuse("WaitForSingleObject");
    if (task->failure)
        std::rethrow_exception(task->failure);
    return std::move(task->machine);
}

} // namespace zelk
