#include "helper/update/Download.h"

#include "helper/linux/update/DownloadUnit.h"
#include "helper/update/AddressRules.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <curl/curl.h>
#include <memory>
#include <string_view>
#include <utility>

namespace helper {

namespace {

constexpr long successStatus = AddressRules::SuccessStatus;

using CurlHandle = std::unique_ptr<CURL, decltype([](CURL* curl) { curl_easy_cleanup(curl); })>;
using CurlAddress = std::unique_ptr<CURLU, decltype([](CURLU* url) { curl_url_cleanup(url); })>;

struct Receiver {
    const std::function<int(std::span<const std::uint8_t>)>& sink;
    CURL* curl;
    std::uint64_t limit;
    std::uint64_t length = 0;
    bool isTooLarge = false;
    int storageFailure = 0;
};

// The body of an answer that is none of success is of no interest.
bool isWanted(CURL* curl)
{
    long status = 0;
    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status);
    return status == 0 || status == successStatus;
}

std::size_t receive(char* bytes, std::size_t, std::size_t count, void* context)
{
    auto& receiver = *static_cast<Receiver*>(context);
    if (!isWanted(receiver.curl))
        return 0;
    receiver.length += count;
    receiver.isTooLarge = receiver.length > receiver.limit;
    if (receiver.isTooLarge)
        return 0;
    receiver.storageFailure = receiver.sink({reinterpret_cast<const std::uint8_t*>(bytes), count});
    return receiver.storageFailure == 0 ? count : 0;
}

bool isAboutTrust(CURLcode code)
{
    return code == CURLE_PEER_FAILED_VERIFICATION || code == CURLE_SSL_ISSUER_ERROR
        || code == CURLE_SSL_INVALIDCERTSTATUS || code == CURLE_SSL_PINNEDPUBKEYNOTMATCH;
}

// The system's own domain for addresses and its codes, so that every edition tells the same.
platform::Error networkError(CURLcode code, const std::string& text)
{
    std::int64_t number = -1;
    switch (code) {
    case CURLE_URL_MALFORMAT:
        number = -1000;
        break;
    case CURLE_OPERATION_TIMEDOUT:
        number = -1001;
        break;
    case CURLE_UNSUPPORTED_PROTOCOL:
        number = -1002;
        break;
    case CURLE_COULDNT_RESOLVE_HOST:
        number = -1003;
        break;
    case CURLE_COULDNT_CONNECT:
        number = -1004;
        break;
    case CURLE_PARTIAL_FILE:
        number = -1005;
        break;
    case CURLE_TOO_MANY_REDIRECTS:
        number = -1007;
        break;
    case CURLE_FILE_COULDNT_READ_FILE:
        number = -1100;
        break;
    case CURLE_FILESIZE_EXCEEDED:
        number = -1103;
        break;
    default:
        if (isAboutTrust(code))
            number = -1202;
    }
    return {"NSURLErrorDomain", number, {{platform::LocalizedDescriptionKey, text + "."}}, nullptr};
}

Download::Failure failureOf(CURLcode code, const Receiver& receiver, long status, const char* text)
{
    using Fault = Download::Fault;
    if (receiver.storageFailure != 0)
        return {Fault::Storage, 0, {platform::POSIXErrorDomain, receiver.storageFailure, {}, nullptr}};
    // A redirection that could not be followed is no answer.
    if (status != 0 && status != successStatus && (code == CURLE_OK || status / 100 != 3))
        return {Fault::Status, status, {}};
    auto reason = networkError(code, *text ? text : curl_easy_strerror(code));
    if (isAboutTrust(code))
        return {Fault::Untrusted, 0, std::move(reason)};
    if (receiver.isTooLarge || code == CURLE_FILESIZE_EXCEEDED)
        return {Fault::TooLarge, 0, networkError(CURLE_FILESIZE_EXCEEDED, "The answer is too large")};
    return {Fault::Network, 0, std::move(reason)};
}

int lookWhetherGivenUp(void* isGivenUp, curl_off_t, curl_off_t, curl_off_t, curl_off_t)
{
    return (*static_cast<const Download::GivenUp*>(isGivenUp))() ? 1 : 0;
}

void setLimits(CURL* curl, const std::string& url, std::uint64_t limit, std::chrono::seconds patience)
{
    // Never follows a redirect from https to http.
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "https,http,file");
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR,
                     AddressRules::mayRedirect(url.substr(0, url.find(':')), "http") ? "https,http" : "https");
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, static_cast<long>(AddressRules::MaximumRedirections));
    curl_easy_setopt(curl, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limit));
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, std::min(AddressRules::ConnectTime, patience).count());
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, static_cast<long>(patience.count()));
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
}

bool prepareLibrary()
{
    static const bool isReady = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return isReady;
}

std::string partOf(CURLU* address, CURLUPart part)
{
    char* text = nullptr;
    if (curl_url_get(address, part, &text, 0) != CURLUE_OK)
        return {};
    std::string result(text);
    curl_free(text);
    return result;
}

} // namespace

Download::Outcome<void> Download::perform(const std::string& url, const Terms& terms, const Sink& sink) const
{
    return DownloadUnit::isNeeded(url) ? DownloadUnit::perform(url, _configuration, terms, sink)
                                       : performHere(url, terms, sink);
}

Download::Outcome<void> Download::performHere(const std::string& url, const Terms& terms, const Sink& sink) const
{
    const CurlHandle curl(prepareLibrary() ? curl_easy_init() : nullptr);
    if (!curl)
        return std::unexpected(Failure{Fault::Network, 0, networkError(CURLE_FAILED_INIT, "No memory")});
    Receiver receiver{sink, curl.get(), terms.size};
    char text[CURL_ERROR_SIZE] = "";
    const auto agent = "Brevane/" + platform::bundleVersion();
    setLimits(curl.get(), url, terms.size, _configuration.patience);
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, static_cast<long>(terms.time.count()));
    if (terms.isGivenUp) {
        curl_easy_setopt(curl.get(), CURLOPT_NOPROGRESS, 0L);
        curl_easy_setopt(curl.get(), CURLOPT_XFERINFOFUNCTION, lookWhetherGivenUp);
        curl_easy_setopt(curl.get(), CURLOPT_XFERINFODATA, const_cast<GivenUp*>(&terms.isGivenUp));
    }
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_USERAGENT, agent.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_ERRORBUFFER, text);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, receive);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &receiver);
    if (!_configuration.authorities.empty())
        curl_easy_setopt(curl.get(), CURLOPT_CAINFO, _configuration.authorities.c_str());

    const auto code = curl_easy_perform(curl.get());
    long status = 0;
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
    if (code != CURLE_OK || (status != 0 && status != successStatus))
        return std::unexpected(failureOf(code, receiver, status, text));
    return {};
}

std::optional<std::string> Download::resolve(const std::string& text, const std::string& base)
{
    const CurlAddress address(curl_url());
    if (!address || curl_url_set(address.get(), CURLUPART_URL, base.c_str(), 0) != CURLUE_OK)
        return std::nullopt;
    const auto baseScheme = partOf(address.get(), CURLUPART_SCHEME);
    if (curl_url_set(address.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK)
        return std::nullopt;
    const auto scheme = partOf(address.get(), CURLUPART_SCHEME);
    return AddressRules::mayName(baseScheme, scheme) ? std::optional(partOf(address.get(), CURLUPART_URL))
                                                     : std::nullopt;
}

bool Download::isWebAddress(const std::string& text)
{
    const CurlAddress address(curl_url());
    if (!address || curl_url_set(address.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK)
        return false;
    const auto scheme = partOf(address.get(), CURLUPART_SCHEME);
    return AddressRules::isOfWeb(scheme);
}

} // namespace helper
