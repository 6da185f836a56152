// Everything that a tool needs to work with a Quellis device library.
#pragma once

#include <velq/binding.h>
