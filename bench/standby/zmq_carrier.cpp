// ZeroMQ with CURVE.

#include "carriers.h"
#include "child.h"

#include <vector>
#include <zmq.h>

namespace standby_bench {

double RunZmq(uint64_t count, uint32_t size) {
    char server_public[41], server_secret[41], client_public[41], client_secret[41];
    if (zmq_curve_keypair(server_public, server_secret) != 0 || zmq_curve_keypair(client_public, client_secret) != 0)
        Fail("ZeroMQ without CURVE");
    Child receiver = Start([&](int, int to) {
        void *context = zmq_ctx_new();
        void *socket = zmq_socket(context, ZMQ_PULL);
        const int one = 1;
        const int mark = 100000;
        zmq_setsockopt(socket, ZMQ_CURVE_SERVER, &one, sizeof one);
        zmq_setsockopt(socket, ZMQ_CURVE_SECRETKEY, server_secret, 40);
        zmq_setsockopt(socket, ZMQ_RCVHWM, &mark, sizeof mark);
        if (zmq_bind(socket, "tcp://127.0.0.1:*") != 0)
            std::_Exit(1);
        char endpoint[64] = {};
        std::size_t length = sizeof endpoint;
        zmq_getsockopt(socket, ZMQ_LAST_ENDPOINT, endpoint, &length);
        if (write(to, endpoint, sizeof endpoint) != sizeof endpoint)
            std::_Exit(1);
        zmq_msg_t message;
        for (uint64_t i = 0; i <= count; ++i) { /* the first one only connects */
            zmq_msg_init(&message);
            if (zmq_msg_recv(&message, socket, 0) < 0)
                std::_Exit(1);
            zmq_msg_close(&message);
            if (i == 0)
                Tell(to, i);
        }
        Tell(to, count);
        zmq_close(socket);
        zmq_ctx_term(context);
    });
    struct Endpoint {
        char text[64];
    };
    const auto endpoint = receiver.Get<Endpoint>();
    void *context = zmq_ctx_new();
    void *socket = zmq_socket(context, ZMQ_PUSH);
    const int mark = 100000;
    zmq_setsockopt(socket, ZMQ_CURVE_SERVERKEY, server_public, 40);
    zmq_setsockopt(socket, ZMQ_CURVE_PUBLICKEY, client_public, 40);
    zmq_setsockopt(socket, ZMQ_CURVE_SECRETKEY, client_secret, 40);
    zmq_setsockopt(socket, ZMQ_SNDHWM, &mark, sizeof mark);
    if (zmq_connect(socket, endpoint.text) != 0)
        Fail("ZeroMQ does not connect");
    const std::vector<uint8_t> payload(size, 0x5A);
    zmq_send(socket, payload.data(), size, 0);
    (void)receiver.Get<uint64_t>();
    const auto begin = Clock::now();
    for (uint64_t i = 0; i < count; ++i)
        zmq_send(socket, payload.data(), size, 0);
    (void)receiver.Get<uint64_t>();
    const double seconds = Seconds(Clock::now() - begin);
    receiver.End();
    zmq_close(socket);
    zmq_ctx_term(context);
    return seconds;
}

} // namespace standby_bench
