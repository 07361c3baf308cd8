#include "ConverterMain.h"

#include "ConverterError.h"

#include <cstdio>
#include <new>

namespace ConverterMain {

void report(const char *name, std::string message)
{
    for (char &c : message) {
        if (static_cast<unsigned char>(c) < 0x20)
            c = '?';
    }
    std::fprintf(stderr, "%s: %s\n", name, message.c_str());
}

int run(const char *name, const std::function<int()> &body)
{
    try {
        return body();
    } catch (const UsageProblem &problem) {
        report(name, problem.what());
        return 2;
    } catch (const ConverterError &error) {
        report(name, error.what());
    } catch (const std::bad_alloc &) {
        report(name, "out of memory");
    } catch (const std::exception &error) {
        report(name, std::string("conversion failed: ") + error.what());
    } catch (...) {
        report(name, "conversion failed for an unknown reason");
    }
    return 1;
}

} // namespace ConverterMain
