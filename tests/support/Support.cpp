namespace tessaro::testing {}
