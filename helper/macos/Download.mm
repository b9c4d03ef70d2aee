#include "helper/update/Download.h"

#include "helper/update/AddressRules.h"
#include "platform/macos/system/Foundation.h"
#include "platform/SystemInformation.h"

#import <Foundation/Foundation.h>
#import <Security/Security.h>

namespace foundation = platform::foundation;

namespace {

using helper::AddressRules;
using helper::Download;
using Fault = Download::Fault;

// One download, as its delegate's queue knows it.
struct Transfer {
    std::function<int(std::span<const std::uint8_t>)> sink; // 0 or an errno value
    std::uint64_t limit = 0;
    std::string firstScheme;
    std::uint64_t length = 0;
    int redirections = 0;
    std::optional<Download::Failure> failure; // the first
};

std::string schemeOf(NSURL* url)
{
    return foundation::string(url.scheme.lowercaseString);
}

platform::Error networkError(NSInteger code, std::string_view text)
{
    return {"NSURLErrorDomain", code, {{platform::LocalizedDescriptionKey, std::string(text)}}, nullptr};
}

Download::Failure tooLarge()
{
    return {Fault::TooLarge, 0, networkError(NSURLErrorDataLengthExceedsMaximum, "The answer is too large.")};
}

bool isAboutTrust(NSInteger code)
{
    return code == NSURLErrorServerCertificateUntrusted || code == NSURLErrorServerCertificateHasBadDate
        || code == NSURLErrorServerCertificateHasUnknownRoot || code == NSURLErrorServerCertificateNotYetValid;
}

// The certificates of a file in PEM's form.
NSArray* certificatesInFile(const std::string& path)
{
    NSData* const bytes = [NSData dataWithContentsOfFile:foundation::string(path)];
    if (!bytes)
        return @[];
    SecExternalFormat format = kSecFormatUnknown;
    SecExternalItemType kind = kSecItemTypeUnknown;
    CFArrayRef items = nullptr;
    if (SecItemImport((__bridge CFDataRef)bytes, CFSTR(".pem"), &format, &kind, 0, nullptr, nullptr, &items)
        != errSecSuccess)
        return @[];
    return CFBridgingRelease(items);
}

bool isTrusted(SecTrustRef trust)
{
    if (@available(macOS 10.14, *))
        return SecTrustEvaluateWithError(trust, nullptr);
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations" // on older systems there is no other
    SecTrustResultType result = kSecTrustResultInvalid;
    return SecTrustEvaluate(trust, &result) == errSecSuccess
        && (result == kSecTrustResultUnspecified || result == kSecTrustResultProceed);
#pragma clang diagnostic pop
}

} // namespace

// Does what the transfer says, on the session's own queue.
@interface BRVDownloadDelegate : NSObject <NSURLSessionDataDelegate>
- (instancetype)initWithTransfer:(Transfer*)transfer authorities:(NSArray*)authorities;
// Signalled when the download has ended, and nothing more is done.
@property (nonatomic, readonly) dispatch_semaphore_t end;
@end

@implementation BRVDownloadDelegate {
    Transfer* _transfer;
    NSArray* _authorities; // nil: those of the system
}

- (instancetype)initWithTransfer:(Transfer*)transfer authorities:(NSArray*)authorities
{
    if ((self = [super init])) {
        _transfer = transfer;
        _authorities = authorities;
        _end = dispatch_semaphore_create(0);
    }
    return self;
}

- (void)fail:(Download::Failure)failure task:(NSURLSessionTask*)task
{
    if (!_transfer->failure)
        _transfer->failure = std::move(failure);
    [task cancel];
}

- (void)URLSession:(NSURLSession*)session
                          task:(NSURLSessionTask*)task
    willPerformHTTPRedirection:(NSHTTPURLResponse*)response
                    newRequest:(NSURLRequest*)request
             completionHandler:(void (^)(NSURLRequest*))completionHandler
{
    if (!AddressRules::mayRedirect(_transfer->firstScheme, schemeOf(request.URL))) {
        completionHandler(nil);
        [self fail:{Fault::Network, 0, networkError(NSURLErrorUnsupportedURL, "The server names no secure address.")}
              task:task];
    } else if (++_transfer->redirections > AddressRules::MaximumRedirections) {
        completionHandler(nil);
        [self fail:{Fault::Network, 0,
                    networkError(NSURLErrorHTTPTooManyRedirects, "The server sends on too many times.")}
              task:task];
    } else {
        completionHandler(request);
    }
}

- (void)URLSession:(NSURLSession*)session
                   task:(NSURLSessionTask*)task
    didReceiveChallenge:(NSURLAuthenticationChallenge*)challenge
      completionHandler:(void (^)(NSURLSessionAuthChallengeDisposition, NSURLCredential*))completionHandler
{
    const SecTrustRef trust = challenge.protectionSpace.serverTrust;
    if (!_authorities || !trust) {
        completionHandler(NSURLSessionAuthChallengePerformDefaultHandling, nil);
        return;
    }
    SecTrustSetAnchorCertificates(trust, (__bridge CFArrayRef)_authorities);
    SecTrustSetAnchorCertificatesOnly(trust, true);
    if (isTrusted(trust)) {
        completionHandler(NSURLSessionAuthChallengeUseCredential, [NSURLCredential credentialForTrust:trust]);
        return;
    }
    completionHandler(NSURLSessionAuthChallengeCancelAuthenticationChallenge, nil);
    [self fail:{Fault::Untrusted, 0,
                networkError(NSURLErrorServerCertificateUntrusted, "The server's certificate is not trusted.")}
          task:task];
}

- (void)URLSession:(NSURLSession*)session
              dataTask:(NSURLSessionDataTask*)task
    didReceiveResponse:(NSURLResponse*)response
     completionHandler:(void (^)(NSURLSessionResponseDisposition))completionHandler
{
    const bool isOfWeb = [response isKindOfClass:NSHTTPURLResponse.class];
    const NSInteger status =
        isOfWeb ? static_cast<NSHTTPURLResponse*>(response).statusCode : AddressRules::SuccessStatus;
    const bool isTooLarge = response.expectedContentLength > 0
        && static_cast<std::uint64_t>(response.expectedContentLength) > _transfer->limit;
    if (status != AddressRules::SuccessStatus)
        [self fail:{Fault::Status, status, {}} task:task];
    else if (isTooLarge)
        [self fail:tooLarge() task:task];
    completionHandler(_transfer->failure ? NSURLSessionResponseCancel : NSURLSessionResponseAllow);
}

- (void)URLSession:(NSURLSession*)session dataTask:(NSURLSessionDataTask*)task didReceiveData:(NSData*)data
{
    _transfer->length += data.length;
    if (_transfer->failure)
        return;
    if (_transfer->length > _transfer->limit) {
        [self fail:tooLarge() task:task];
        return;
    }
    [data enumerateByteRangesUsingBlock:^(const void* bytes, NSRange range, BOOL* stop) {
        const int failure = self->_transfer->sink({static_cast<const std::uint8_t*>(bytes), range.length});
        if (failure == 0)
            return;
        *stop = YES;
        [self fail:{ Fault::Storage, 0, {platform::POSIXErrorDomain, failure, {}, nullptr} } task:task];
    }];
}

- (void)URLSession:(NSURLSession*)session task:(NSURLSessionTask*)task didCompleteWithError:(NSError*)error
{
    if (error && !_transfer->failure) {
        const bool isTrustIssue = [error.domain isEqualToString:NSURLErrorDomain] && isAboutTrust(error.code);
        _transfer->failure =
            Download::Failure{isTrustIssue ? Fault::Untrusted : Fault::Network, 0,
                              networkError(error.code, foundation::string(error.localizedDescription))};
    }
}

- (void)URLSession:(NSURLSession*)session didBecomeInvalidWithError:(NSError*)error
{
    dispatch_semaphore_signal(_end);
}

@end

namespace helper {

namespace {

NSURLSession* sessionFor(BRVDownloadDelegate* delegate, std::chrono::seconds patience, std::chrono::seconds time)
{
    NSURLSessionConfiguration* const configuration = NSURLSessionConfiguration.ephemeralSessionConfiguration;
    configuration.timeoutIntervalForRequest = static_cast<double>(patience.count()); // of silence
    configuration.timeoutIntervalForResource = static_cast<double>(time.count());
    configuration.requestCachePolicy = NSURLRequestReloadIgnoringLocalCacheData;
    configuration.HTTPShouldSetCookies = NO;
    configuration.URLCache = nil;
    configuration.HTTPAdditionalHeaders =
        @{@"User-Agent" : foundation::string("Brevane/" + platform::bundleVersion()), @"Accept-Encoding" : @"identity"};
    return [NSURLSession sessionWithConfiguration:configuration delegate:delegate delegateQueue:nil];
}

NSURL* urlOf(const std::string& text)
{
    NSURL* const url = [NSURL URLWithString:foundation::string(text)];
    return url.scheme.length > 0 ? url : nil;
}

bool isFetchable(NSURL* url)
{
    const auto scheme = schemeOf(url);
    return url && (AddressRules::isOfWeb(scheme) ? url.host.length > 0 : scheme == "file");
}

} // namespace

// The helper has its network here.
Download::Outcome<void> Download::perform(const std::string& url, const Terms& terms, const Sink& sink) const
{
    return performHere(url, terms, sink);
}

Download::Outcome<void> Download::performHere(const std::string& url, const Terms& terms, const Sink& sink) const
{
    @autoreleasepool {
        NSURL* const address = urlOf(url);
        if (!isFetchable(address))
            return std::unexpected(
                Failure{Fault::Network, 0, networkError(NSURLErrorBadURL, "The address is none that can be fetched.")});
        Transfer transfer{.sink = sink, .limit = terms.size, .firstScheme = schemeOf(address), .failure = {}};
        NSArray* const authorities =
            _configuration.authorities.empty() ? nil : certificatesInFile(_configuration.authorities);
        BRVDownloadDelegate* const delegate = [[BRVDownloadDelegate alloc] initWithTransfer:&transfer
                                                                                authorities:authorities];
        NSURLSession* const session = sessionFor(delegate, _configuration.patience, terms.time);
        NSURLSessionDataTask* const task = [session dataTaskWithURL:address];
        [task resume];
        [session finishTasksAndInvalidate];
        constexpr std::int64_t lookAgain = NSEC_PER_SEC;
        while (dispatch_semaphore_wait(delegate.end, dispatch_time(DISPATCH_TIME_NOW, lookAgain)) != 0) {
            if (terms.isGivenUp && terms.isGivenUp())
                [task cancel];
        }
        if (transfer.failure)
            return std::unexpected(std::move(*transfer.failure));
        return {};
    }
}

std::optional<std::string> Download::resolve(const std::string& text, const std::string& base)
{
    @autoreleasepool {
        NSURL* const from = urlOf(base);
        if (!from)
            return std::nullopt;
        NSURL* const url = [NSURL URLWithString:foundation::string(text) relativeToURL:from].absoluteURL;
        if (!isFetchable(url) || !AddressRules::mayName(schemeOf(from), schemeOf(url)))
            return std::nullopt;
        return foundation::string(url.absoluteString);
    }
}

bool Download::isWebAddress(const std::string& text)
{
    @autoreleasepool {
        NSURL* const url = urlOf(text);
        return isFetchable(url) && AddressRules::isOfWeb(schemeOf(url));
    }
}

} // namespace helper
