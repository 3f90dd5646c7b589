// Nothing of its own: the headers that all tests include are precompiled with it.
