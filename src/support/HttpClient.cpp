#include "support/HttpClient.h"

#include <algorithm>
#include <utility>

namespace tidewell {

namespace {

/// ASCII only, whatever the locale says.
char lower(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

std::string_view HttpResponse::header(std::string_view name) const
{
    const auto sameName = [name](const HttpHeader& candidate) {
        return std::ranges::equal(candidate.name, name, {}, lower, lower);
    };
    const auto found = std::ranges::find_if(headers, sameName);
    return found == headers.end() ? std::string_view{} : found->value;
}

std::string description(const HttpError& error)
{
    using enum HttpError::Kind;
    switch (error.kind) {
    case invalidURL: return "The address cannot be used.";
    case cannotResolve: return "The server's name could not be found.";
    case cannotConnect: return "Could not connect to the server.";
    case tls: return "No secure connection to the server could be made.";
    case timedOut: return "The request timed out.";
    case connectionLost: return "The network connection was lost.";
    case answerTooLarge: return "The server's answer was too large.";
    case redirectRefused: return "The server redirected to an address that is not trusted.";
    case badAnswer: return "The server's answer could not be understood.";
    }
    std::unreachable();
}

}  // namespace tidewell
