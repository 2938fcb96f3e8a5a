/* A host that asks for session addresses, and prints the library's answers, a line each. */

#include <stdio.h>

#include "orlindex/talix.h"

static void ask(const char* name, const char* address)
{
    static char text[16384];
    talix_buffer session;

    session.buffer = text;
    session.size = sizeof text;
    printf("%s: %d\n", name, (int)talix_get_session_uri(address, 0, &session));
}

int main(void)
{
    talix_product_config config;

    if (talix_init() != IdSuccess)
        return 1;
    config = talix_create_product_config("address-host", "openid");
    if (!config || talix_set_product_config(talix_get_server(), config) != IdSuccess || talix_login() != IdSuccess)
        return 2;
    ask("well-formed", "https://a.example/\xC3\xA9");
    ask("surrogate", "https://a.example/\xED\xA0\x80");
    ask("cut off", "https://a.example/\xC3");
    /* What follows in the test begins without a login. */
    if (talix_logout(TALIX_LOGOUT_FORCE) != IdSuccess)
        return 3;
    return talix_deinit() == IdSuccess ? 0 : 4;
}
