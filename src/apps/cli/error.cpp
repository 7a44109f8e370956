#include "apps/cli/error.h"

#include "core/reflection.h"

namespace pedvar {
namespace {

ErrorKind kindOf(StoreError::Kind kind) {
    switch (kind) {
        case StoreError::Kind::notAStore:
            return ErrorKind::notAStore;
        case StoreError::Kind::newerVersion:
            return ErrorKind::newerVersion;
        case StoreError::Kind::damaged:
            return ErrorKind::damaged;
        case StoreError::Kind::unwritable:
            return ErrorKind::unwritable;
        case StoreError::Kind::full:
            return ErrorKind::full;
        case StoreError::Kind::busy:
            return ErrorKind::busy;
        case StoreError::Kind::unknownSource:
            return ErrorKind::usage;
        case StoreError::Kind::other:
            break;
    }
    return ErrorKind::failed;
}

ErrorKind kindOf(DefaultsError::Kind kind) {
    switch (kind) {
        case DefaultsError::Kind::unwritable:
            return ErrorKind::unwritable;
        case DefaultsError::Kind::full:
            return ErrorKind::full;
        case DefaultsError::Kind::busy:
            return ErrorKind::busy;
        case DefaultsError::Kind::damaged:
            return ErrorKind::damaged;
        case DefaultsError::Kind::notAStore:
            return ErrorKind::notAStore;
        case DefaultsError::Kind::newerVersion:
            return ErrorKind::newerVersion;
    }
    return ErrorKind::failed;
}

ErrorKind kindOf(ImportError::Kind kind) {
    switch (kind) {
        case ImportError::Kind::notFound:
            return ErrorKind::fileNotFound;
        case ImportError::Kind::unreadable:
            return ErrorKind::unreadable;
        case ImportError::Kind::damaged:
            return ErrorKind::truncated;
        case ImportError::Kind::empty:
        case ImportError::Kind::notAnExport:
        case ImportError::Kind::noExportInside:
        case ImportError::Kind::passwordProtected:
        case ImportError::Kind::unsupportedEncoding:
            break;
    }
    return ErrorKind::notAnExport;
}

ErrorKind kindOf(GPXError error) {
    switch (error) {
        case GPXError::noTrackPoints:
            return ErrorKind::noTrackPoints;
        case GPXError::fileNotFound:
            return ErrorKind::fileNotFound;
        case GPXError::invalidFormat:
            break;
    }
    return ErrorKind::invalidFormat;
}

}  // namespace

JsonValue errorDocument(const CommandError& error, const Texts& text) {
    return {JsonObject{{"kind", {std::string(caseName(error.kind))}}, {"message", {text.of(error.message)}}}};
}

CommandError errorOf(const StoreError& error) {
    return {kindOf(error.kind), error.message};
}

CommandError errorOf(const DefaultsError& error) {
    return {kindOf(error.kind), error.message};
}

CommandError errorOf(const ImportError& error) {
    return {kindOf(error.kind), error.message};
}

CommandError errorOf(const GPXFailure& failure, const std::string& file) {
    return {kindOf(failure.error), Phrase("\"{}\": {}", {file, failure.message()})};
}

}  // namespace pedvar
