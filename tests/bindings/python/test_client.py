"""The client for threads, against the stand-in."""

import gc
import threading
import unittest
import warnings

import orlindex
from orlindex import EventCode, Proxy
from standin import NAME, PATIENCE, StandInTest, control, open_client


def resident_bytes():
    with open('/proc/self/statm', encoding='ascii') as file:
        return int(file.read().split()[1]) * 4096


class Client(StandInTest):
    def test_signs_in_and_out(self):
        with open_client() as client:
            self.assertFalse(client.is_signed_in)
            client.sign_in()
            self.assertTrue(client.is_signed_in)
            self.assertTrue(client.is_login_valid)
            self.assertFalse(client.is_token_expired)
            client.sign_out()
            self.assertFalse(client.is_signed_in)

    def test_passes_the_product(self):
        open_client(product_line_name=NAME, product_build_id='7', server=orlindex.Server.DEVELOPMENT,
                    login_mode=orlindex.LoginMode.BROWSER, window=0x123456789A).close()
        self.assertEqual(control.standin_product().decode(), f'my-client-id;openid;{NAME};(none);7;')

    def test_texts(self):
        with open_client() as client:
            for text in (client.access_token(), client.access_token(wait=True), client.id_token(), client.profile(),
                         client.session_uri(NAME, 65535), client.user_info().display_name, client.user_info().email):
                self.assertEqual(text, NAME)
            self.assertEqual(client.user_info().user_id, '')
            self.assertEqual(client.versions(), orlindex.Versions('1.10.0', orlindex.LIBRARY_VERSION))
            client.refresh_token()
            client.quit_server_process(1000)

    def test_long_texts_get_larger_buffers(self):
        with open_client() as client:
            control.standin_write_long_texts(1000000)
            self.assertEqual(client.user_info().display_name, NAME)
            self.assertEqual(client.profile(), NAME)
            self.assertEqual(client.proxy().host, NAME)
            control.standin_write_long_texts(2000000000)
            for call in (client.user_info, client.profile, client.proxy, client.access_token):
                with self.assertRaises(orlindex.StatusError) as raised:
                    call()
                self.assertEqual(raised.exception.name, 'IdBufferTooSmall')

    def test_servers(self):
        with open_client() as client:
            client.server = orlindex.Server.DEVELOPMENT
            self.assertEqual(client.server, orlindex.Server.DEVELOPMENT)
            self.assertEqual(client.environment, orlindex.Environment.UNAVAILABLE)
            with self.assertRaises(orlindex.StatusError):
                client.server = orlindex.Server.STAGING

    def test_proxies(self):
        with open_client() as client:
            self.assertTrue(client.has_proxy(NAME, 3128))
            self.assertFalse(client.has_proxy())
            with self.assertRaises(orlindex.StatusError):
                client.has_proxy('host', 0)
            self.assertEqual(client.proxy(NAME, 3128), Proxy(NAME, 3128, NAME))
            client.set_proxy(Proxy(NAME, 3128, 'user'))
            client.clear_proxies()

    def test_a_text_with_a_zero_is_refused(self):
        with open_client() as client, self.assertRaisesRegex(ValueError, 'null character'):
            client.session_uri('one\0two')
        with self.assertRaisesRegex(ValueError, 'null character'):
            orlindex.Client('my\0id', 'openid')

    def test_errors_have_code_name_and_meaning(self):
        control.standin_init_returns(orlindex.StatusCode.IdClientUnavailable)
        with self.assertRaises(orlindex.StatusError) as raised:
            open_client()
        error = raised.exception
        self.assertEqual((error.operation, error.code, error.name), ('talix_init', 3005, 'IdClientUnavailable'))
        self.assertIn('could not be obtained', error.meaning)
        self.assertIn('orlindex-doctor', str(error))
        control.standin_reset()
        with open_client() as client:
            control.standin_login_returns(4018)
            with self.assertRaises(orlindex.StatusError) as raised:
                client.sign_in()
            self.assertEqual((raised.exception.code, raised.exception.name), (4018, ''))

    # --- Events --------------------------------------------------------------------------------------------------

    def test_events_come_on_the_thread_that_dispatches(self):
        found = []
        with open_client() as client:
            client.add_handler(lambda event: found.append((event.name, event.status, threading.get_ident())))
            worker = threading.Thread(target=client.sign_in)
            worker.start()
            worker.join(PATIENCE)
            self.assertEqual(found, [])
            client.dispatch_events()
            self.assertEqual(found, [('LOGGED_IN', 1000, threading.get_ident())])
            client.dispatch_events()
            self.assertEqual(len(found), 1)

    def test_an_event_without_a_name(self):
        with open_client() as client:
            control.standin_queue_event(99)
            self.assertEqual([event.name for event in client.take_events()], ['99'])

    def test_a_handler_that_raises(self):
        found = []

        def raises(event):
            raise KeyError(event.code)

        with open_client() as client:
            client.add_handler(raises)
            client.add_handler(lambda event: found.append(event.code))
            control.standin_queue_event(EventCode.TOKEN_REFRESHED)
            with self.assertRaises(KeyError) as raised:
                client.dispatch_events()
            self.assertEqual(raised.exception.args, (EventCode.TOKEN_REFRESHED,))
            self.assertEqual(found, [])
            client.dispatch_events()
            self.assertEqual(found, [EventCode.TOKEN_REFRESHED])
            client.remove_handler(raises)
            control.standin_queue_event(EventCode.LOGGED_OUT)
            client.dispatch_events()

    def test_garbage_collection_during_a_callback(self):
        found = []
        thresholds = gc.get_threshold()
        gc.set_threshold(1)  # a collection at every allocation, also in the callback that the library calls
        try:
            with open_client() as client:
                client.add_handler(lambda event: (gc.collect(), found.append(event.code)))
                for _ in range(20):
                    control.standin_queue_event(EventCode.LOGGED_IN)
                    client.dispatch_events()
        finally:
            gc.set_threshold(*thresholds)
        self.assertEqual(len(found), 20)

    def test_a_handler_may_close_the_client(self):
        found = []
        client = open_client()
        client.add_handler(lambda event: client.close())
        client.add_handler(found.append)
        control.standin_queue_event(EventCode.LOGGED_OUT)
        client.dispatch_events()
        self.assertTrue(client.closed)
        self.assertEqual(found, [])

    # --- Cancellation --------------------------------------------------------------------------------------------

    def wait_until_inside(self):
        watch = threading.Event()
        while not control.standin_inside():
            watch.wait(0.001)

    def sign_in_on_a_thread(self, client):
        raised = []

        def run():
            try:
                client.sign_in()
            except orlindex.OrlindexError as error:
                raised.append(error)

        thread = threading.Thread(target=run)
        thread.start()
        self.wait_until_inside()
        return thread, raised

    def test_cancels_a_sign_in(self):
        with open_client() as client:
            for lost in (0, 1, 3):
                control.standin_login_waits(lost)
                thread, raised = self.sign_in_on_a_thread(client)
                with self.assertRaisesRegex(RuntimeError, 'another sign-in'):
                    client.sign_in()
                client.cancel_sign_in()
                thread.join(PATIENCE)
                self.assertEqual([type(error) for error in raised], [orlindex.SignInCancelled])
                self.assertEqual(raised[0].__cause__.code, 4019)
            client.cancel_sign_in()

    def test_cancelling_never_signs_out(self):
        with open_client() as client:
            client.sign_in()
            client.cancel_sign_in()
            self.assertTrue(client.is_signed_in)

    def test_cancelling_does_not_sign_out_a_user_who_just_signed_in(self):
        with open_client() as client:
            control.standin_login_waits(0)
            thread, raised = self.sign_in_on_a_thread(client)
            control.standin_user_signs_in(False)
            cancelling = threading.Thread(target=client.cancel_sign_in)
            cancelling.start()
            cancelling.join(0.1)  # A wrong request to log out would come now.
            self.assertTrue(client.is_signed_in)
            control.standin_user_signs_in(True)
            thread.join(PATIENCE)
            cancelling.join(PATIENCE)
            self.assertEqual(raised, [])
            self.assertTrue(client.is_signed_in)

    def test_close_waits_for_calls_of_other_threads(self):
        client = open_client()
        control.standin_hold_tokens(True)
        texts = []
        caller = threading.Thread(target=lambda: texts.append(client.access_token()))
        caller.start()
        self.wait_until_inside()
        closing = threading.Thread(target=client.close)
        closing.start()
        closing.join(0.1)  # A wrong stop would come now.
        self.assertEqual(control.standin_starts(), 1)
        control.standin_hold_tokens(False)
        closing.join(PATIENCE)
        caller.join(PATIENCE)
        self.assertEqual(texts, [NAME])

    def test_close_ends_a_sign_in(self):
        client = open_client()
        control.standin_login_waits(2)
        thread, raised = self.sign_in_on_a_thread(client)
        client.close()
        thread.join(PATIENCE)
        self.assertEqual([type(error) for error in raised], [orlindex.SignInCancelled])

    # --- Lifetime ------------------------------------------------------------------------------------------------

    def test_use_after_close(self):
        client = open_client()
        client.close()
        client.close()
        self.assertTrue(client.closed)
        for call in (client.sign_in, client.access_token, client.dispatch_events, client.versions, client.sign_out):
            with self.assertRaisesRegex(ValueError, 'closed client'):
                call()
        client.cancel_sign_in()

    def test_one_client_in_a_process(self):
        with open_client(), self.assertRaisesRegex(RuntimeError, 'another client'):
            open_client()
        open_client().close()

    def test_a_client_that_nobody_closes(self):
        with warnings.catch_warnings(record=True) as caught:
            warnings.simplefilter('always')
            client = open_client()
            client.add_handler(lambda event: None)
            del client
            gc.collect()
        self.assertEqual([warning.category for warning in caught], [ResourceWarning])

    def test_a_failed_start_leaves_nothing(self):
        for options in ({'server': orlindex.Server.STAGING}, {'login_mode': orlindex.LoginMode.EMBEDDED}, {'window': 1}):
            with self.subTest(options), self.assertRaises(orlindex.StatusError):
                open_client(**options)
            self.assertEqual(control.standin_starts(), 0)

    def test_a_thousand_rounds_do_not_grow(self):
        def rounds(count):
            for _ in range(count):
                with open_client() as client:
                    client.add_handler(lambda event: None)
                    client.sign_in()
                    client.access_token()
                    client.user_info()
                    client.dispatch_events()
                    client.sign_out()
            gc.collect()

        rounds(100)
        objects, before = len(gc.get_objects()), resident_bytes()
        rounds(1000)
        self.assertLess(len(gc.get_objects()) - objects, 100)
        self.assertLess(resident_bytes() - before, 2 * 1024 * 1024)
        print('count: rounds of the Python client = 1100')


unittest.main()
