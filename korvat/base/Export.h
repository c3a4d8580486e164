#pragma once

// Marks what libkorvat.so offers to its callers; everything else stays hidden.
#define KORVAT_API __attribute__((visibility("default")))
