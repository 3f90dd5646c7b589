#pragma once

/// What `call` returns, or `failure` if it throws: no exception crosses the codec interface. What is thrown
/// there is std::bad_alloc, by the containers, the metadata table, the ProRes engine, by binding a library
/// and by the host's row threads.
template <typename Result, typename Call>
Result CatchAll(Result failure, const Call& call) {
    try {
        return call();
    } catch (...) {
        return failure;
    }
}
