// Compiles only if the declarations for TypeScript let a host write what it needs, and refuse what is wrong.

import { LoginMode, OrlindexClient, OrlindexError, OrlindexLibraryError, Server, StatusCode, UserInfo, libraryVersion } from 'orlindex';

export async function host(signal: AbortSignal): Promise<UserInfo | undefined> {
    try {
        const client = await OrlindexClient.open({
            clientId: 'my-client-id', scope: 'openid profile', server: Server.PRODUCTION, loginMode: LoginMode.BROWSER, window: 1n,
        });
        client.on('signedIn', status => status === StatusCode.IdSuccess).once('event', ({ code }) => code + 1);
        await client.signIn({ signal });
        const token: string = await client.accessToken({ wait: true });
        await client.setProxy({ host: token, port: 3128 });
        const user = await client.userInfo();
        await client.close();
        return user;
    } catch (error) {
        if (error instanceof OrlindexError)
            console.error(error.status.toFixed(), error.statusName, error.meaning, error.operation);
        else if (error instanceof OrlindexLibraryError)
            console.error(error.path, error.reason, error.remedy, libraryVersion);
        return undefined;
    }
}

export function wrong(client: OrlindexClient): void {
    // @ts-expect-error: the scope is missing
    void OrlindexClient.open({ clientId: 'my-client-id' });
    // @ts-expect-error: a client is opened
    new OrlindexClient();
    // @ts-expect-error: no such event
    client.on('signedUp', () => {});
    // @ts-expect-error: a promise
    client.accessToken().length;
    // @ts-expect-error: no such value
    Server.ELSEWHERE;
}
