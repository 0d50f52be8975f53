// pixturn: a command-line Xojo host for the PixTurn plug-in. Every problem ends
// here as one line on stderr and an exit status; outputs still pending were
// discarded on the way up.
#include <cstdio>
#include <exception>
#include <new>

#include "tools/pixturn/arguments.h"
#include "tools/pixturn/atomic_output.h"
#include "tools/pixturn/commands.h"
#include "tools/pixturn/failure.h"

int main(int argc, char** argv) {
    using namespace pixturn;
    RemoveTemporariesOnSignals();
    try {
        Invocation invocation = ParseCommandLine(argc, argv);
        const Command& command = *FindCommand(invocation.command);
        if (invocation.help) {
            invocation.operands = {invocation.command};
            return RunHelp(command, invocation);
        }
        return command.run(command, invocation);
    } catch (const Failure& failure) {
        std::fprintf(stderr, "pixturn: %s\n", failure.what());
        return failure.status();
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "pixturn: out of memory\n");
        return kExitFailure;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pixturn: internal error: %s\n", error.what());
        return kExitInternal;
    }
}
