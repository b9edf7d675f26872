#pragma once

/// Calls of operator new in this process so far; -1 where a sanitizer has its own operators.
long countAllocations();
