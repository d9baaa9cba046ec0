namespace tessaro::testing {
}
