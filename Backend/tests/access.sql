-- What a request may do, and above all what it may not.
BEGIN;
\ir helpers.sql
SELECT no_plan();

SELECT pg_temp.day_row(email, 'desk', '2026-03-05', 10), pg_temp.day_row(email, 'lap', '2026-03-05', 20),
    pg_temp.hour_row(email, 'desk', '2026-03-05', 9, 10), pg_temp.app_row(email, 'desk', '2026-03-05', 9, 'app', 10),
    pg_temp.registry_row(email, 'app', 'App', false), pg_temp.device(email, 'desk', 'Desk', '2026-03-05T14:07:09Z')
FROM unnest(ARRAY['ada@example.org', 'bob@example.org']) AS email;

-- The rights of the roles of requests, all of them. `authenticated` stands for every other such role.
SELECT is(string_agg(privilege_type || ' ' || table_name, ', ' ORDER BY privilege_type, table_name), NULL,
          'no right to a whole table')
FROM information_schema.role_table_grants
WHERE grantee IN ('anon', 'authenticated', 'PUBLIC') AND table_schema = 'public';
SELECT is(string_agg(DISTINCT grantee || ' ' || privilege_type, ', '), 'anon INSERT, anon SELECT, anon UPDATE',
          'nor a right to columns but those that an upsert needs')
FROM information_schema.role_column_grants
WHERE grantee IN ('anon', 'authenticated', 'PUBLIC') AND table_schema = 'public';
SELECT is(array_agg(proname::text ORDER BY proname),
    ARRAY['get_account_app_daily_totals', 'get_account_app_hourly_totals', 'get_account_daily_totals',
          'get_account_devices', 'get_account_hourly_totals', 'get_account_today_total'],
    'the functions that may be called')
FROM pg_proc WHERE pronamespace = 'public'::regnamespace AND has_function_privilege('anon', oid, 'EXECUTE');
SELECT ok(NOT has_schema_privilege(role, 'public', 'CREATE'), role || ' creates nothing')
FROM unnest(ARRAY['anon', 'fernhollow_reader']) AS role;
SELECT is(count(*), 6::bigint, 'the functions are stable, pinned and run as a role that only reads')
FROM pg_proc
WHERE pronamespace = 'public'::regnamespace AND provolatile = 's' AND prosecdef
    AND 'search_path=pg_catalog, pg_temp' = ANY (proconfig) AND proowner = 'fernhollow_reader'::regrole;
SELECT is(string_agg(DISTINCT privilege_type, ','), 'SELECT', 'what that role may do')
FROM information_schema.role_table_grants WHERE grantee = 'fernhollow_reader';
SELECT is(count(*), 0::bigint, 'nobody logs in as a role of requests or of functions, and none passes by the policies')
FROM pg_roles
WHERE rolname IN ('anon', 'fernhollow_reader') AND (rolcanlogin OR rolbypassrls OR rolsuper OR rolcreaterole OR rolcreatedb);
SELECT is(count(*) FILTER (WHERE relrowsecurity), count(*), 'row-level security is on everywhere')
FROM pg_class WHERE relnamespace = 'public'::regnamespace AND relkind IN ('r', 'p');

-- Requests that a client never sends.
SELECT throws_ok(format('SELECT pg_temp.request(%L, %L)', method, statement), '42501', NULL, method || ' ' || statement)
FROM (VALUES
    ('GET', 'SELECT count FROM device_day_counts'),
    ('GET', 'SELECT customer_email FROM device_day_counts'),
    ('GET', $$SELECT count FROM device_day_counts WHERE customer_email = 'ada@example.org'$$),
    ('GET', $$SELECT count FROM device_day_counts WHERE customer_email LIKE '%' LIMIT 2$$),
    ('GET', 'SELECT customer_email FROM device_day_counts OFFSET 2 LIMIT 1'),
    ('DELETE', $$DELETE FROM device_day_counts WHERE customer_email = 'ada@example.org' RETURNING 1$$),
    ('PUT', $$INSERT INTO devices VALUES (now(), 'eve@example.org', 'd', 'n') RETURNING 1$$),
    ('', $$INSERT INTO devices VALUES (now(), 'eve@example.org', 'd', 'n') RETURNING 1$$)) AS t (method, statement);
SELECT is(pg_temp.request(method, statement)::text, '[]', method || ' ' || statement || ' finds nothing')
FROM (VALUES
    ('GET', 'SELECT customer_email FROM devices'),
    ('GET', 'SELECT customer_email FROM device_hour_counts'),
    ('GET', 'SELECT customer_email FROM device_app_hour_counts'),
    ('GET', 'SELECT app_name FROM device_app_registry'),
    ('', 'SELECT count FROM device_day_counts'),
    ('PATCH', 'UPDATE device_day_counts SET count = 0 RETURNING 1'),
    ('PATCH', 'UPDATE devices SET device_name = ''mine'' RETURNING 1')) AS t (method, statement);
SELECT is(pg_temp.request('POST', statement, path)::text, '[]', path || ' ' || statement || ' finds nothing')
FROM unnest(ARRAY['/rpc/any', '/rest/v1/rpc/any']) AS path,
    unnest(ARRAY['SELECT customer_email FROM device_day_counts', 'SELECT customer_email FROM devices',
                 'UPDATE device_hour_counts SET count = 0 RETURNING 1']) AS statement;
SELECT is((SELECT sum(count) FROM device_day_counts), 60::numeric, 'and nothing was changed');
SET LOCAL ROLE anon;
DO $$ BEGIN TRUNCATE public.devices; EXCEPTION WHEN insufficient_privilege THEN NULL; END $$;
RESET ROLE;
SELECT is((SELECT count(*) FROM devices), 2::bigint, 'nor emptied');

-- The select that clients send goes through an index condition, so its policy meets one row, not all.
SELECT is(pg_temp.device_count('ada@example.org', 'lap', '2026-03-05')::text, '[{"count":20}]', 'the one select');
SET LOCAL enable_indexscan = off;
SET LOCAL enable_bitmapscan = off;
SELECT is(pg_temp.device_count('bob@example.org', 'lap', '2026-03-05')::text, '[{"count":20}]',
          'also when a small table is read whole');

-- What an operator adds later is closed until he opens it. He is the tables' owner here.
SELECT set_config('role', tableowner, true) FROM pg_tables WHERE tablename = 'devices';
CREATE TABLE public.later (id serial);
CREATE FUNCTION public.later() RETURNS integer LANGUAGE sql AS 'SELECT 1';
RESET ROLE;
SELECT ok(NOT has_table_privilege(role, 'public.later', 'SELECT, INSERT, UPDATE, DELETE, TRUNCATE')
              AND NOT has_sequence_privilege(role, 'public.later_id_seq', 'USAGE, SELECT, UPDATE')
              AND NOT has_function_privilege(role, 'public.later()', 'EXECUTE'), 'closed to ' || role)
FROM pg_roles, LATERAL (SELECT rolname::text AS role) AS r
WHERE rolname IN ('anon', 'authenticated', 'fernhollow_reader');

SELECT * FROM finish();
ROLLBACK;
