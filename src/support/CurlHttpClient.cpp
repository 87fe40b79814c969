#include "support/CurlHttpClient.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <netinet/in.h>
#include <pthread.h>
#include <time.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <new>
#include <stdexcept>
#include <utility>

#include "support/Workers.h"

namespace tidewell {

namespace {

/// Time since the machine was started, time asleep included.
using BootTime = std::chrono::nanoseconds;
using Result = std::expected<HttpResponse, HttpError>;

constexpr std::size_t longestBody = 4 * 1024 * 1024;
constexpr std::size_t longestHeaders = 64 * 1024;
constexpr std::size_t mostHeaders = 256;
constexpr Seconds longestTimeout = 24h;
constexpr auto connectTimeout = 15s;
constexpr int mostRedirects = 3;
/// Servers and routers forget idle connections; an older one costs a lost request more often than it saves.
constexpr auto reuseWindow = 30s;
/// libcurl waits on a clock that stands still while the machine sleeps, so its waits are kept short.
constexpr auto longestPoll = 1s;
constexpr std::size_t mostIdle = 2;

BootTime bootTime()
{
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return std::chrono::seconds{now.tv_sec} + std::chrono::nanoseconds{now.tv_nsec};
}

std::unexpected<HttpError> failure(HttpError::Kind kind) { return std::unexpected{HttpError{kind}}; }

template <auto function>
using Freed = decltype([](auto* handle) { function(handle); });
using UrlHandle = std::unique_ptr<CURLU, Freed<curl_url_cleanup>>;
using EasyHandle = std::unique_ptr<CURL, Freed<curl_easy_cleanup>>;
using MultiHandle = std::unique_ptr<CURLM, Freed<curl_multi_cleanup>>;

/// Header lines as libcurl takes them; wiped when they go, since tokens travel in headers.
class HeaderList {
public:
    HeaderList() = default;
    HeaderList(const HeaderList&) = delete;
    HeaderList& operator=(const HeaderList&) = delete;
    ~HeaderList()
    {
        for (const curl_slist* line = first_; line; line = line->next)
            wipe(line->data, std::char_traits<char>::length(line->data));
        curl_slist_free_all(first_);
    }

    void add(std::string line)
    {
        curl_slist* const longer = curl_slist_append(first_, line.c_str());
        wipe(line.data(), line.size());
        if (!longer)
            throw std::bad_alloc{};
        first_ = longer;
    }

    [[nodiscard]] curl_slist* get() const { return first_; }

private:
    curl_slist* first_ = nullptr;
};

template <class Value>
void set(const EasyHandle& easy, CURLoption option, Value value)
{
    // Refused only without memory, or by a library that lacks what the build found in it: sending anyway
    // might send what the option forbids.
    if (curl_easy_setopt(easy.get(), option, value) != CURLE_OK)
        throw std::runtime_error{"libcurl refused an option"};
}

bool equalIgnoringCase(std::string_view left, std::string_view right)
{
    const auto lower = [](char letter) { return letter >= 'A' && letter <= 'Z' ? letter + 32 : letter + 0; };
    return std::ranges::equal(left, right, {}, lower, lower);
}

/// Where a request goes, taken apart once: what is checked is what is sent.
struct Target {
    UrlHandle url;
    std::string scheme;
    std::string host;  ///< As libcurl normalises it; IPv6 in brackets.
    std::string port;
    bool loopback = false;
};

std::string partOf(const UrlHandle& url, CURLUPart part, unsigned flags = 0)
{
    char* text = nullptr;
    if (curl_url_get(url.get(), part, &text, flags) != CURLUE_OK)
        return {};
    const std::unique_ptr<char, Freed<curl_free>> owner{text};
    return text;
}

bool isLoopback(std::string host)
{
    if (equalIgnoringCase(host, "localhost"))
        return true;  // libcurl never asks a name server for it.
    in_addr four{};
    if (inet_pton(AF_INET, host.c_str(), &four) == 1)
        return (ntohl(four.s_addr) >> 24) == 127;
    if (!host.starts_with('[') || !host.ends_with(']'))
        return false;
    host = host.substr(1, host.size() - 2);
    in6_addr six{};
    return inet_pton(AF_INET6, host.c_str(), &six) == 1 && IN6_IS_ADDR_LOOPBACK(&six);
}

/// The target, or none when requests must not go there.
std::optional<Target> targetOf(const std::string& text)
{
    Target target{.url = UrlHandle{curl_url()}};
    if (!target.url)
        throw std::bad_alloc{};
    if (text.find('\0') != std::string::npos ||
        curl_url_set(target.url.get(), CURLUPART_URL, text.c_str(), CURLU_DISALLOW_USER) != CURLUE_OK)
        return {};
    target.scheme = partOf(target.url, CURLUPART_SCHEME);
    target.host = partOf(target.url, CURLUPART_HOST);
    target.port = partOf(target.url, CURLUPART_PORT, CURLU_DEFAULT_PORT);
    target.loopback = isLoopback(target.host);
    if (target.host.empty() || (target.scheme != "https" && !(target.scheme == "http" && target.loopback)))
        return {};
    return target;
}

bool mayRedirect(const Target& from, const Target& to)
{
    if (!equalIgnoringCase(from.host, to.host))
        return false;
    // Another port is another service; the step from http to https changes it by nature.
    return from.scheme == to.scheme ? from.port == to.port : to.scheme == "https";
}

bool canBeSent(const std::vector<HttpHeader>& headers)
{
    return std::ranges::all_of(headers, [](const HttpHeader& header) {
        const bool named = !header.name.empty() && std::ranges::all_of(header.name, [](char letter) {
            return letter > ' ' && letter < 0x7F && letter != ':' && letter != ';';
        });
        return named && header.value.find_first_of(std::string_view{"\r\n\0", 3}) == std::string::npos;
    });
}

/// What libcurl's callbacks fill in.
struct Receiver {
    HttpResponse response{};
    std::size_t headerBytes = 0;
    bool connected = false;
    bool headComplete = false;
    bool tooLarge = false;
};

/// Anything but the offered size ends the transfer.
constexpr std::size_t refused = 0;

std::size_t receiveBody(char* data, std::size_t, std::size_t size, void* context)
{
    Receiver& receiver = *static_cast<Receiver*>(context);
    if (size > longestBody - receiver.response.body.size()) {
        receiver.tooLarge = true;
        return refused;
    }
    try {
        receiver.response.body.append(data, size);
    } catch (const std::bad_alloc&) {
        return refused;
    }
    return size;
}

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view space = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(space);
    return begin == std::string_view::npos ? std::string_view{}
                                           : text.substr(begin, text.find_last_not_of(space) - begin + 1);
}

std::size_t receiveHeader(char* data, std::size_t, std::size_t size, void* context)
{
    Receiver& receiver = *static_cast<Receiver*>(context);
    const std::string_view line{data, size};
    receiver.headerBytes += size;
    if (receiver.headerBytes > longestHeaders || receiver.response.headers.size() == mostHeaders) {
        receiver.tooLarge = true;
        return refused;
    }
    receiver.headComplete = receiver.headComplete || trimmed(line).empty();
    try {
        if (line.starts_with("HTTP/")) {
            receiver.response.headers.clear();  // What came before was an interim answer.
            receiver.headComplete = false;
        } else if (const std::size_t colon = line.find(':'); colon != std::string_view::npos) {
            receiver.response.headers.push_back({.name = std::string{trimmed(line.substr(0, colon))},
                                                 .value = std::string{trimmed(line.substr(colon + 1))}});
        }
    } catch (const std::bad_alloc&) {
        return refused;
    }
    return size;
}

int noteConnected(void* context, char*, char*, int, int)
{
    static_cast<Receiver*>(context)->connected = true;
    return CURL_PREREQFUNC_OK;
}

HttpError::Kind kindOf(CURLcode code, const EasyHandle& easy)
{
    using enum HttpError::Kind;
    switch (code) {
    case CURLE_URL_MALFORMAT: return invalidURL;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY: return cannotResolve;
    case CURLE_COULDNT_CONNECT:
    case CURLE_INTERFACE_FAILED:
    case CURLE_PROXY: return cannotConnect;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_ENGINE_NOTFOUND:
    case CURLE_SSL_ENGINE_SETFAILED:
    case CURLE_SSL_ENGINE_INITFAILED:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_CRL_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_CLIENTCERT: return tls;
    case CURLE_OPERATION_TIMEDOUT: return timedOut;
    case CURLE_FILESIZE_EXCEEDED: return answerTooLarge;
    case CURLE_UNSUPPORTED_PROTOCOL:  // An answer without a status line.
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_WRITE_ERROR: return badAnswer;
    default: break;
    }
    // A proxy that refuses to connect us shows as a failure to receive.
    long proxyStatus = 0;
    curl_easy_getinfo(easy.get(), CURLINFO_HTTP_CONNECTCODE, &proxyStatus);
    return proxyStatus >= 300 ? cannotConnect : connectionLost;
}

}  // namespace

/// The means by which a caller that leaves ends its transfer on the worker. Any thread.
class TransferAbort {
public:
    void request()
    {
        const std::lock_guard lock{mutex_};
        requested_ = true;
        if (waiting_)
            curl_multi_wakeup(waiting_);
    }

    [[nodiscard]] bool requested() const
    {
        const std::lock_guard lock{mutex_};
        return requested_;
    }

    /// What to wake; null before and after the transfer.
    void attach(CURLM* multi)
    {
        const std::lock_guard lock{mutex_};
        waiting_ = multi;
    }

private:
    mutable std::mutex mutex_;
    bool requested_ = false;
    CURLM* waiting_ = nullptr;
};

/// What the transfers of one client share. Outlives the client while a worker still needs it. Any thread.
struct CurlHttpClient::Transfers {
    /// A set of live connections, used by one transfer at a time.
    struct Connections {
        MultiHandle multi;
        std::string host;  ///< Of the last request.
        BootTime lastUse{};
        std::uint64_t era = 0;  ///< A failure ends an era, and with it the trust in what is connected.
    };

    explicit Transfers(std::string agent) : userAgent{std::move(agent)} {}

    Result perform(const HttpRequest& request, TransferAbort& abort, BootTime deadline);
    Result attempt(const Connections& connections, const Target& target, HttpMethod method,
                   const std::vector<HttpHeader>& headers, std::string_view body, TransferAbort& abort,
                   BootTime deadline) const;
    Result withRedirects(const Connections& connections, Target target, const HttpRequest& request,
                         TransferAbort& abort, BootTime deadline) const;
    Connections take(const std::string& host);
    void giveBack(Connections connections, const std::string& host);
    void distrust();
    void begin(const std::shared_ptr<TransferAbort>& abort);
    void close();

    const std::string userAgent;
    std::mutex mutex;
    std::vector<Connections> idle;
    std::vector<std::weak_ptr<TransferAbort>> running;
    std::uint64_t era = 0;
    bool closed = false;
};

CurlHttpClient::Transfers::Connections CurlHttpClient::Transfers::take(const std::string& host)
{
    std::vector<Connections> dropped;  // Closed after the lock: closing may speak with the server.
    const std::lock_guard lock{mutex};
    const BootTime now = bootTime();
    std::erase_if(idle, [&](Connections& connections) {
        const bool old = connections.era != era || now - connections.lastUse > reuseWindow;
        if (old)
            dropped.push_back(std::move(connections));
        return old;
    });
    auto chosen = std::ranges::find(idle, host, &Connections::host);
    if (chosen == idle.end() && !idle.empty())
        chosen = idle.begin();
    if (chosen != idle.end()) {
        Connections connections = std::move(*chosen);
        idle.erase(chosen);
        return connections;
    }
    Connections connections{.multi = MultiHandle{curl_multi_init()}, .era = era};
    if (!connections.multi)
        throw std::bad_alloc{};
    return connections;
}

void CurlHttpClient::Transfers::giveBack(Connections connections, const std::string& host)
{
    connections.host = host;
    connections.lastUse = bootTime();
    const std::lock_guard lock{mutex};
    if (!closed && connections.era == era && idle.size() < mostIdle)
        idle.push_back(std::move(connections));
}

void CurlHttpClient::Transfers::distrust()
{
    std::vector<Connections> dropped;
    const std::lock_guard lock{mutex};
    ++era;
    dropped.swap(idle);
}

void CurlHttpClient::Transfers::begin(const std::shared_ptr<TransferAbort>& abort)
{
    const std::lock_guard lock{mutex};
    std::erase_if(running, [](const auto& transfer) { return transfer.expired(); });
    running.push_back(abort);
}

void CurlHttpClient::Transfers::close()
{
    std::vector<Connections> dropped;
    const std::lock_guard lock{mutex};
    closed = true;
    dropped.swap(idle);
    for (const auto& transfer : running)
        if (const auto abort = transfer.lock())
            abort->request();
}

Result CurlHttpClient::Transfers::attempt(const Connections& connections, const Target& target,
                                          HttpMethod method, const std::vector<HttpHeader>& headers,
                                          std::string_view body, TransferAbort& abort,
                                          BootTime deadline) const
{
    const EasyHandle easy{curl_easy_init()};
    if (!easy)
        throw std::bad_alloc{};
    Receiver receiver;
    HeaderList lines;
    bool typed = false;
    for (const HttpHeader& header : headers) {
        lines.add(header.value.empty() ? header.name + ';' : header.name + ": " + header.value);
        typed = typed || equalIgnoringCase(header.name, "Content-Type");
    }
    lines.add("Expect:");  // Nothing waits for "100 Continue".
    if (method == HttpMethod::post && !typed)
        lines.add("Content-Type:");  // Else libcurl calls it a form.

    set(easy, CURLOPT_CURLU, target.url.get());
    set(easy, CURLOPT_PROTOCOLS_STR, target.loopback ? "http,https" : "https");
    set(easy, CURLOPT_FOLLOWLOCATION, 0L);
    set(easy, CURLOPT_USERAGENT, userAgent.c_str());
    set(easy, CURLOPT_HTTPHEADER, lines.get());
    set(easy, CURLOPT_ACCEPT_ENCODING, "gzip");
    set(easy, CURLOPT_NOSIGNAL, 1L);
    set(easy, CURLOPT_NETRC, long{CURL_NETRC_IGNORED});
    set(easy, CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2});
    set(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    set(easy, CURLOPT_MAXFILESIZE, static_cast<long>(longestBody));
    set(easy, CURLOPT_CONNECTTIMEOUT_MS,
        static_cast<long>(std::chrono::milliseconds{connectTimeout}.count()));
    set(easy, CURLOPT_WRITEFUNCTION, &receiveBody);
    set(easy, CURLOPT_WRITEDATA, &receiver);
    set(easy, CURLOPT_HEADERFUNCTION, &receiveHeader);
    set(easy, CURLOPT_HEADERDATA, &receiver);
    set(easy, CURLOPT_PREREQFUNCTION, &noteConnected);
    set(easy, CURLOPT_PREREQDATA, &receiver);
    if (target.loopback)
        set(easy, CURLOPT_NOPROXY, "*");
    // As OpenSSL's own programs and curl have it: for networks with an authority of their own.
    if (const char* const authorities = std::getenv("SSL_CERT_FILE"); authorities && *authorities)
        set(easy, CURLOPT_CAINFO, authorities);
    if (method == HttpMethod::post) {
        // Sent from the caller's memory, so that no second copy of a password is left unwiped.
        set(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        set(easy, CURLOPT_POSTFIELDS, body.data() ? body.data() : "");
    }
#if LIBCURL_VERSION_NUM >= 0x075700
    // A name server that does not answer would hold up the end of a transfer that was given up.
    curl_easy_setopt(easy.get(), CURLOPT_QUICK_EXIT, 1L);
#endif

    CURLM* const multi = connections.multi.get();
    if (curl_multi_add_handle(multi, easy.get()) != CURLM_OK)
        throw std::bad_alloc{};
    abort.attach(multi);
    struct Detach {
        CURLM* multi;
        CURL* easy;
        TransferAbort& abort;
        ~Detach()
        {
            abort.attach(nullptr);
            curl_multi_remove_handle(multi, easy);
        }
    };
    const Detach detach{multi, easy.get(), abort};

    const BootTime connectDeadline = std::min(deadline, bootTime() + connectTimeout);
    CURLcode ended = CURLE_OK;
    for (;;) {
        int active = 0;
        if (curl_multi_perform(multi, &active) != CURLM_OK)
            return failure(HttpError::Kind::connectionLost);
        int queued = 0;
        if (const CURLMsg* const message = curl_multi_info_read(multi, &queued)) {
            ended = message->data.result;
            break;
        }
        if (abort.requested())
            return failure(HttpError::Kind::connectionLost);
        const BootTime left = (receiver.connected ? deadline : connectDeadline) - bootTime();
        if (left <= BootTime::zero())
            return failure(HttpError::Kind::timedOut);
        const auto wait = std::min(std::chrono::ceil<std::chrono::milliseconds>(left),
                                   std::chrono::milliseconds{longestPoll});
        curl_multi_poll(multi, nullptr, 0, static_cast<int>(wait.count()), nullptr);
    }
    if (receiver.tooLarge)
        return failure(HttpError::Kind::answerTooLarge);
    if (ended != CURLE_OK)
        return failure(kindOf(ended, easy));
    // libcurl takes a connection that closes among the headers for an answer without a body.
    if (!receiver.headComplete)
        return failure(HttpError::Kind::connectionLost);
    long status = 0;
    curl_easy_getinfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
    receiver.response.status = static_cast<int>(status);
    return std::move(receiver.response);
}

Result CurlHttpClient::Transfers::withRedirects(const Connections& connections, Target target,
                                                const HttpRequest& request, TransferAbort& abort,
                                                BootTime deadline) const
{
    HttpMethod method = request.method;
    std::vector<HttpHeader> headers = request.headers;
    for (int redirects = 0;; ++redirects) {
        Result result = attempt(connections, target, method, headers, request.body.reveal(), abort, deadline);
        if (!result)
            return result;
        constexpr std::array redirecting{301, 302, 303, 307, 308};
        const std::string_view location = result->header("Location");
        if (location.empty() || std::ranges::find(redirecting, result->status) == redirecting.end())
            return result;
        if (redirects == mostRedirects)
            return failure(HttpError::Kind::redirectRefused);
        // libcurl resolves a relative address against the one that it replaces.
        const UrlHandle next{curl_url_dup(target.url.get())};
        if (!next)
            throw std::bad_alloc{};
        if (curl_url_set(next.get(), CURLUPART_URL, std::string{location}.c_str(), CURLU_DISALLOW_USER) !=
            CURLUE_OK)
            return failure(HttpError::Kind::redirectRefused);
        const std::string address = partOf(next, CURLUPART_URL);
        if (request.redirectDelegate &&
            !request.redirectDelegate->mayFollow(partOf(target.url, CURLUPART_URL), address))
            return failure(HttpError::Kind::redirectRefused);
        auto nextTarget = targetOf(address);
        if (!nextTarget || !mayRedirect(target, *nextTarget))
            return failure(HttpError::Kind::redirectRefused);
        target = std::move(*nextTarget);
        // Only 307 and 308 keep the method (RFC 9110, section 15.4).
        if (result->status < 307 && method == HttpMethod::post) {
            method = HttpMethod::get;
            std::erase_if(headers, [](const HttpHeader& header) {
                return equalIgnoringCase(header.name, "Content-Type") ||
                       equalIgnoringCase(header.name, "Content-Length") ||
                       equalIgnoringCase(header.name, "Content-Encoding");
            });
        }
    }
}

Result CurlHttpClient::Transfers::perform(const HttpRequest& request, TransferAbort& abort, BootTime deadline)
{
    // A server that goes away while we write must not end the program. The thread is a worker's own, so
    // nothing is lost by leaving the signal blocked.
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);

    auto target = targetOf(request.url);
    if (!target)
        return failure(HttpError::Kind::invalidURL);
    if (bootTime() >= deadline)
        return failure(HttpError::Kind::timedOut);
    const std::string host = target->host;
    Connections connections = take(host);
    Result result = withRedirects(connections, std::move(*target), request, abort, deadline);
    if (result)
        giveBack(std::move(connections), host);
    else if (!abort.requested())
        distrust();
    return result;
}

CurlHttpClient::CurlHttpClient(asio::any_io_executor workers, std::string userAgent)
    : workers_{std::move(workers)}, transfers_{std::make_shared<Transfers>(std::move(userAgent))}
{
    static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (started != CURLE_OK)
        throw std::runtime_error{"libcurl could not be started"};
}

CurlHttpClient::~CurlHttpClient() { transfers_->close(); }

asio::awaitable<Result> CurlHttpClient::send(HttpRequest request)
{
    // Checked before anything is queued, let alone sent.
    if (!targetOf(request.url) || !canBeSent(request.headers))
        co_return failure(HttpError::Kind::invalidURL);
    const double seconds = request.timeout.count();
    const Seconds timeout = seconds > 0 ? std::min(request.timeout, longestTimeout) : Seconds{0};
    const BootTime deadline = bootTime() + std::chrono::ceil<BootTime>(timeout);

    const auto transfers = transfers_;
    const auto abort = std::make_shared<TransferAbort>();
    transfers->begin(abort);
    // Runs when the caller has its answer, is cancelled, or is dropped with its executor.
    struct AbortAtEnd {
        std::shared_ptr<TransferAbort> abort;
        ~AbortAtEnd() { abort->request(); }
    };
    const AbortAtEnd guard{abort};
    auto work = [transfers, abort, deadline, request = std::move(request)] {
        return transfers->perform(request, *abort, deadline);
    };
    co_return co_await runOnWorker(workers_, std::move(work));
}

}  // namespace tidewell
