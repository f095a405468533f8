#include "Benchmarks/Library/Work.h"
#include "Common/VQMLog.h"

Work LogLines(std::size_t size)
{
    return {[=] {
                for (std::size_t line = 0; line < size; ++line) {
                    VQM_LOG_DEBUG("item - order %d \n", static_cast<int>(line));
                }
            },
            static_cast<double>(size)};
}
