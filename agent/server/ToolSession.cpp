#include "server/ToolSession.h"

#include <utility>

namespace Kestrany::Agent {

ToolSession::ToolSession(Perform perform, std::function<void()> afterResponse, Send send,
                         std::function<std::int64_t()> ticks, std::int64_t limit)
    : perform_(std::move(perform)), afterResponse_(std::move(afterResponse)), send_(std::move(send)),
      ticks_(std::move(ticks)), limit_(limit)
{
}

bool ToolSession::Receive(const std::string& message)
{
    std::string problem;
    const std::optional<Request> request = ReadRequest(message, problem);
    if (!request)
        return false;
    const std::optional<Json::Value> result = perform_(request->operation);
    Response response;
    response.id = request->id;
    response.code = result ? IdSuccess : IdProtocolError;
    response.result = result.value_or(Json::Value(Json::objectValue));
    send_(WriteResponse(response));
    afterResponse_();
    return true;
}

} // namespace Kestrany::Agent
