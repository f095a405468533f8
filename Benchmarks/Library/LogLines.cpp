#include "Benchmarks/Library/Work.h"
#include "Common/VQMLog.h"

namespace {

void Log(std::size_t lines)
{
    for (std::size_t line = 0; line < lines; ++line) {
        VQM_LOG_DEBUG("item - order %d \n", static_cast<int>(line));
    }
}

} // namespace

Work LogLines(std::size_t size)
{
    return {[=] { Log(size); }, static_cast<double>(size)};
}
