// The source that carries the headers precompiled once for all rooms and tests (MORVANE_PCH).
