#include "simulator/ServiceFault.h"

#include <fmt/format.h>

namespace tidewell {

namespace {

constexpr std::string_view jsonType = "application/json";
constexpr std::string_view htmlType = "text/html; charset=UTF-8";

/// RFC 9110 section 5.6.7: "Mon, 02 Mar 2026 07:55:13 GMT".
std::string httpDate(Date date)
{
    constexpr std::array<std::string_view, 7> weekdays{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr std::array<std::string_view, 12> months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const auto seconds = std::chrono::floor<std::chrono::seconds>(date);
    const auto day = std::chrono::floor<std::chrono::days>(seconds);
    const std::chrono::year_month_day ymd{day};
    const std::chrono::hh_mm_ss time{seconds - day};
    return fmt::format("{}, {:02} {} {:04} {:02}:{:02}:{:02} GMT",
                       weekdays[std::chrono::weekday{day}.c_encoding()], unsigned{ymd.day()},
                       months[unsigned{ymd.month()} - 1], int{ymd.year()}, time.hours().count(),
                       time.minutes().count(), time.seconds().count());
}

}  // namespace

ServiceFault takeFault(ServiceFault& standing)
{
    ServiceFault fault = standing;
    if (fault.times == 1)
        standing = {};
    else if (fault.times > 1)
        standing.times -= 1;
    return fault;
}

std::string errorPage(int status)
{
    const auto page = [](std::string_view title, std::string_view heading, std::string_view text) {
        return fmt::format(
            "<!DOCTYPE html>\n<html lang=\"en-US\"><head><title>{}</title></head>\n"
            "<body><h1>{}</h1><p>{}</p></body></html>\n",
            title, heading, text);
    };
    if (status == 403)
        return page("Attention Required!", "Sorry, you have been blocked",
                    "You are unable to access this service.");
    if (status == 429)
        return page("Access denied", "Error 1015",
                    "The owner of this website has banned you temporarily to restrict access.");
    return page("Service unavailable", "Something went wrong", "Please try again in a few minutes.");
}

std::optional<FaultBody> faultBody(const ServiceFault& fault, std::span<const std::string_view> wrongForms,
                                   std::size_t& turn)
{
    using Kind = ServiceFault::Kind;
    switch (fault.kind) {
    case Kind::none:
    case Kind::error:
    case Kind::nullId:
    case Kind::transport: return std::nullopt;
    case Kind::emptyBody: return FaultBody{200, "", jsonType};
    case Kind::html: return FaultBody{fault.status, errorPage(fault.status), htmlType};
    case Kind::status: return FaultBody{fault.status, "{}", jsonType};
    case Kind::body: return FaultBody{fault.status, fault.body, jsonType};
    case Kind::garbage: {
        const auto form = turn++ % (wrongForms.size() + 3);
        if (form == 0)
            return FaultBody{200, "Something is wrong here", jsonType};
        if (form <= wrongForms.size())
            return FaultBody{200, std::string{wrongForms[form - 1]}, jsonType};
        return FaultBody{200, form > wrongForms.size() + 1 ? errorPage(200) : std::string(100'000, '['),
                         jsonType};
    }
    }
    std::unreachable();
}

void addFault(SimulatedAnswer& answer, const ServiceFault& fault, Date now)
{
    auto& headers = answer.response.headers;
    headers.insert(headers.end(), fault.headers.begin(), fault.headers.end());
    if (fault.retryAfterDate)
        headers.push_back({"Retry-After", httpDate(now + *fault.retryAfterDate)});
    if (fault.kind == ServiceFault::Kind::transport) {
        answer.fault = fault.transport;
        answer.cutAfter = fault.cutAfter;
    }
}

}  // namespace tidewell
