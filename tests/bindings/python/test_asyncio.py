"""The client for asyncio, against the stand-in."""

import asyncio
import unittest

import orlindex
from orlindex import EventCode
from standin import LIBRARY, NAME, PATIENCE, StandInTest, control


def make_client(**options):
    return orlindex.AsyncClient('my-client-id', 'openid', library=LIBRARY, dispatch_interval=0.001, **options)


async def until_inside():
    while not control.standin_inside():
        await asyncio.sleep(0.001)


class AsyncClient(StandInTest):
    def run_in_loop(self, coroutine):
        return asyncio.run(asyncio.wait_for(coroutine, PATIENCE))

    def test_signs_in_and_out(self):
        async def host():
            async with make_client() as client:
                events = client.events()
                first = asyncio.ensure_future(events.__anext__())
                await asyncio.sleep(0)
                await client.sign_in()
                self.assertTrue(await client.is_signed_in())
                self.assertTrue(await client.is_login_valid())
                self.assertFalse(await client.is_token_expired())
                self.assertEqual((await first).name, 'LOGGED_IN')
                self.assertEqual((await client.user_info()).display_name, NAME)
                for text in (client.access_token(), client.access_token(wait=True), client.id_token(), client.profile(),
                             client.session_uri(NAME, 65535)):
                    self.assertEqual(await text, NAME)
                await client.refresh_token()
                await client.set_proxy(orlindex.Proxy(NAME, 3128, 'user'))
                self.assertEqual((await client.proxy(NAME, 3128)).port, 3128)
                self.assertEqual((await client.versions()).library, orlindex.LIBRARY_VERSION)
                await client.quit_server_process(1000)
                await client.sign_out(force=True)
                self.assertEqual((await events.__anext__()).name, 'LOGGED_OUT')

        self.run_in_loop(host())

    def test_the_loop_runs_during_a_sign_in(self):
        async def host():
            async with make_client() as client:
                control.standin_login_waits(0)
                login = asyncio.ensure_future(client.sign_in())
                await until_inside()
                for _ in range(100):
                    await asyncio.sleep(0)
                self.assertFalse(login.done())
                self.assertFalse(await client.is_signed_in())
                await client.cancel_sign_in()
                with self.assertRaises(orlindex.SignInCancelled):
                    await login

        self.run_in_loop(host())

    def test_a_cancelled_task_ends_its_sign_in(self):
        async def host():
            async with make_client() as client:
                control.standin_login_waits(2)
                with self.assertRaises(asyncio.TimeoutError):
                    await asyncio.wait_for(client.sign_in(), 0.01)
                self.assertEqual(control.standin_inside(), 0)
                control.standin_login_waits(0)
                login = asyncio.ensure_future(client.sign_in())
                await until_inside()
                login.cancel()
                with self.assertRaises(asyncio.CancelledError):
                    await login
                self.assertEqual(control.standin_inside(), 0)

        self.run_in_loop(host())

    def test_close_ends_a_sign_in_and_the_iterators(self):
        async def host():
            client = await make_client().open()

            async def listen():
                return [event.name async for event in client.events()]

            listener = asyncio.ensure_future(listen())
            await asyncio.sleep(0)
            control.standin_login_waits(0)
            login = asyncio.ensure_future(client.sign_in())
            await until_inside()
            await client.close()
            with self.assertRaises(orlindex.SignInCancelled):
                await login
            self.assertEqual(await listener, [])

        self.run_in_loop(host())

    def test_an_exception_of_a_handler_goes_to_the_loop(self):
        async def host():
            reported = asyncio.get_running_loop().create_future()
            later = asyncio.get_running_loop().create_future()
            asyncio.get_running_loop().set_exception_handler(lambda _, context: reported.set_result(context['exception']))

            def raises(event):
                raise KeyError(event.code)

            async with make_client() as client:
                client.add_handler(raises)
                client.add_handler(lambda event: later.done() or later.set_result(event.name))
                control.standin_queue_event(EventCode.TOKEN_AVAILABLE)
                self.assertEqual((await reported).args, (EventCode.TOKEN_AVAILABLE,))
                self.assertEqual(await later, 'TOKEN_AVAILABLE')
                client.remove_handler(raises)

        self.run_in_loop(host())

    def test_a_start_that_fails(self):
        async def host():
            control.standin_init_returns(orlindex.StatusCode.IdClientUnavailable)
            with self.assertRaises(orlindex.StatusError):
                await make_client().open()
            control.standin_reset()
            async with make_client():
                pass

        self.run_in_loop(host())

    def test_a_cancelled_open_stops_the_library(self):
        async def host():
            opening = asyncio.ensure_future(make_client().open())
            await asyncio.sleep(0)
            opening.cancel()
            with self.assertRaises(asyncio.CancelledError):
                await opening

        self.run_in_loop(host())

    def test_use_before_open_and_after_close(self):
        async def host():
            client = make_client()
            with self.assertRaisesRegex(ValueError, 'not open'):
                await client.sign_in()
            async with client:
                pass
            for call in (client.sign_in, client.access_token, client.is_signed_in, client.user_info):
                with self.assertRaisesRegex(ValueError, 'closed client'):
                    await call()
            with self.assertRaisesRegex(ValueError, 'opened once'):
                await client.open()
            await client.close()

        self.run_in_loop(host())


unittest.main()
