#include "platform/wininet/objects.h"
#include "platform/wininet/redirects.h"
#include "platform/wininet/request_round.h"

namespace wininet {

DWORD RequestObject::BeginUpload(const Lines& send_lines, std::uint64_t size) {
    m_uploading = false;
    m_upload_size = size;
    m_written = 0;
    Round round;
    round.body_kind = BodyKind::upload;
    PrepareRound(round, send_lines);
    m_sent = m_next ? *m_next : InitialCredential();
    m_next.reset();
    round.credential = m_sent;
    if (m_connection == nullptr) {
        m_connection = connect->TakeConnection();
    }
    DWORD error = m_connection->Start(MakeTransfer(round));
    if (error == ERROR_SUCCESS) {
        error = m_connection->DriveToBody();
    }
    m_uploading = error == ERROR_SUCCESS;
    return Report(error);
}

DWORD RequestObject::Write(const char* data, size_t size) {
    if (!m_uploading) {
        return ERROR_INTERNET_INCORRECT_HANDLE_STATE;
    }
    m_written += size;
    if (m_written > m_upload_size) {
        return ERROR_SUCCESS;
    }
    return Report(m_connection->Feed(data, size));
}

DWORD RequestObject::EndUpload() {
    if (!m_uploading) {
        return ERROR_INTERNET_INCORRECT_HANDLE_STATE;
    }
    m_uploading = false;
    if (m_written != m_upload_size) {
        // Without its last bytes the request never becomes whole, and the server keeps what it had.
        m_connection.reset();
        return ERROR_INVALID_DATA;
    }
    const DWORD error = m_connection->EndFeed();
    TakeAnswer();
    if (error != ERROR_SUCCESS) {
        return Report(error);
    }
    NoteAnswer(m_sent);
    if (ClassifyRedirect(answer.Status(), verb) != Redirect::none) {
        return ERROR_HTTP_REDIRECT_FAILED;
    }
    m_next = NextCredential(m_sent);
    if (m_next) {
        return ERROR_INTERNET_FORCE_RETRY;
    }
    has_answer = true;
    return ERROR_SUCCESS;
}

} // namespace wininet
