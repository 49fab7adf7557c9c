#include <FakeHost.h>

#include <MPI/BListC.h>
#include <MPI/MPISocketClientC.h>

namespace FakeHost
{

SState& State()
{
    static SState state;
    return state;
}

void Reset()
{
    State() = SState();
}

void Record(const std::string& call)
{
    State().calls.push_back(call);
}

std::string TakeCalls()
{
    std::string text;
    for (const std::string& call : State().calls)
        text += call + "\n";
    State().calls.clear();
    return text;
}

} // namespace FakeHost

namespace
{
std::string Shown(bool value)
{
    return value ? "true" : "false";
}

void CallIfSet(const std::function<void()>& hook)
{
    if (hook)
        hook();
}
} // namespace

void* BListC::operator new(std::size_t size)
{
    CallIfSet(FakeHost::State().onList);
    return ::operator new(size);
}

void BListC::operator delete(void* list)
{
    FakeHost::Record("list deleted");
    ::operator delete(list);
}

std::string BListC::Shown() const
{
    std::string text;
    for (const std::unique_ptr<BElementC>& element : m_elements)
    {
        text += (text.empty() ? "" : ", ") + element->Shown();
        if (element->Parent() != this)
            text += " without its parent";
    }
    return "(" + text + ")";
}

bool Socket::Connect(const std::string& host, unsigned short port, int timeoutMilliseconds)
{
    FakeHost::Record("Connect " + host + " " + std::to_string(port) + " " +
                     std::to_string(timeoutMilliseconds));
    return FakeHost::State().connects;
}

bool MPISocketConnectionC::SendNotification(const std::string& name, BListC* arguments)
{
    FakeHost::Record("send " + name + arguments->Shown());
    CallIfSet(FakeHost::State().onSend);
    return FakeHost::State().connected;
}

MPISocketClientC::MPISocketClientC(bool reconnect)
{
    FakeHost::Record("MPISocketClientC " + Shown(reconnect));
}

MPISocketClientC::~MPISocketClientC()
{
    FakeHost::Record("~MPISocketClientC");
}

bool MPISocketClientC::VerifyConnection()
{
    FakeHost::SState& state = FakeHost::State();
    bool answer = state.connected;
    if (!state.answers.empty())
    {
        answer = state.answers.front();
        state.answers.pop_front();
    }
    FakeHost::Record("verify " + Shown(answer));
    CallIfSet(state.onVerify);
    return answer;
}
