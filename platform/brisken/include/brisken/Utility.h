#pragma once

/// All vector kernels: every bulk operation over rows of samples. Each header is the manual of its family.
#include <brisken/utility/Arithmetic.h>
#include <brisken/utility/Compare.h>
#include <brisken/utility/Complex.h>
#include <brisken/utility/Convert.h>
#include <brisken/utility/Convolution.h>
#include <brisken/utility/Copy.h>
#include <brisken/utility/Elementary.h>
#include <brisken/utility/Fill.h>
#include <brisken/utility/Interleave.h>
#include <brisken/utility/Memory.h>
#include <brisken/utility/Power.h>
#include <brisken/utility/Reductions.h>
#include <brisken/utility/Windows.h>
