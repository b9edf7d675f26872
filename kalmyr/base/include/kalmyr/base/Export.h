#pragma once

/// \file
/// Marks what each library of the toolkit and the inspector makes public.
///
/// Everything is compiled with hidden visibility; a class or function is callable
/// from outside its library only when it carries its library's macro. The macros
/// are the same for building and for using a library.

#if defined(__GNUC__)
#define KALMYR_VISIBLE __attribute__((visibility("default")))
#else
#define KALMYR_VISIBLE
#endif

#define KALMYRBASE_API KALMYR_VISIBLE
#define KALMYR_API KALMYR_VISIBLE
#define KALMYRGUI_API KALMYR_VISIBLE
#define KALMYRQT_API KALMYR_VISIBLE
#define PLOTREL_API KALMYR_VISIBLE
#define TILEVEX_API KALMYR_VISIBLE
#define MIRABO_API KALMYR_VISIBLE
