#pragma once

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <zelk_state/zelk_state.h>

/// What an operation of the C interface gave: one text, as its contract says.
struct Outcome
{
    int iCode;
    nlohmann::json json; ///< the result, or the error
    bool bError;
};

/// `operation` takes the two texts and gives the code.
template <class Operation>
Outcome Give(const Operation& operation)
{
    char* pszResult = nullptr;
    char* pszError = nullptr;
    const int iCode = operation(&pszResult, &pszError);
    EXPECT_NE(pszResult == nullptr, pszError == nullptr) << "code " << iCode;
    const bool bError = pszError != nullptr;
    auto json = nlohmann::json::parse(bError ? pszError : pszResult != nullptr ? pszResult : "null");
    zelk_state_free(pszResult);
    zelk_state_free(pszError);
    if (bError)
    {
        EXPECT_EQ(iCode, json.at("exitCode"));
    }
    return {iCode, std::move(json), bError};
}
