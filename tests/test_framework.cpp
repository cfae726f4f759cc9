// A program without tests, whose precompiled headers of the test framework the other test programs reuse.
